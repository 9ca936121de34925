#include <cmath>
#include <deque>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Base64.h"
#include "VEXOCore/Log.h"
#include "VEXOCore/Quote.h"
#include "VEXOSerialization/JsonArchive.h"
#include "VEXOSerialization/SerializationMessages.h"

namespace vexo {

using Json = nlohmann::json;

namespace {

/// Sections within sections. A tree of our own, because a JSON object of the library asks for memory when it
/// is destroyed, where a failure would end the process; single values do not.
struct Section {
  struct Item {
    Json value;
    const Section* section = nullptr;  ///< null when the item is a value
  };
  std::map<std::string, Item> items;
};
/// All sections of a tree, the root first. Side by side, so that deep ones are destroyed without recursion.
using Sections = std::deque<Section>;

/// Builds the tree while the parser, which does not recurse, goes through the text; refuses what no archive
/// has as soon as it comes.
class Builder final : public nlohmann::json_sax<Json> {
public:
  Builder(Sections& sections, std::size_t maxDepth) : _sections(sections), _maxDepth(maxDepth) {}

  bool start_object(std::size_t) override {
    if (_open.size() > _maxDepth)
      throw std::runtime_error("its sections are nested deeper than " + std::to_string(_maxDepth));
    _sections.emplace_back();
    if (!_open.empty()) _item->section = &_sections.back();
    _open.push_back(&_sections.back());
    return true;
  }
  bool end_object() override {
    _open.pop_back();
    return true;
  }
  bool start_array(std::size_t) override { throw std::runtime_error("it has an array"); }
  bool end_array() override { return true; }
  bool key(std::string& name) override {
    const auto [place, added] = _open.back()->items.try_emplace(name);
    if (!added) throw std::runtime_error("the name " + quote(name) + " occurs twice in a section");
    _item = &place->second;
    return true;
  }
  bool null() override { return keep(nullptr); }
  bool boolean(bool value) override { return keep(value); }
  bool number_integer(Json::number_integer_t value) override { return keep(value); }
  bool number_unsigned(Json::number_unsigned_t value) override { return keep(value); }
  bool number_float(Json::number_float_t value, const std::string&) override { return keep(value); }
  bool string(std::string& value) override { return keep(std::move(value)); }
  bool binary(Json::binary_t&) override { return false; }
  bool parse_error(std::size_t, const std::string&, const Json::exception& error) override {
    throw std::runtime_error(error.what());
  }

private:
  template <class T>
  bool keep(T&& value) {
    if (_open.empty()) throw std::runtime_error("it is a single value");
    _item->value = std::forward<T>(value);
    return true;
  }

  Sections& _sections;
  const std::size_t _maxDepth;
  std::vector<Section*> _open;
  Section::Item* _item = nullptr;  ///< the one whose name was read last
};

void parse(const std::string& text, const JsonLimits& limits, Sections& sections) {
  if (text.size() > limits.maxTextSize)
    throw std::runtime_error("its size, " + std::to_string(text.size()) + " bytes, is over the limit of " +
                             std::to_string(limits.maxTextSize));
  Builder builder(sections, limits.maxDepth);
  Json::sax_parse(text, &builder);
}

bool convert(const Json& json, bool& value) {
  if (!json.is_boolean()) return false;
  value = json.get<bool>();
  return true;
}

template <class T>
bool convertInteger(const Json& json, T& value) {
  using Limits = std::numeric_limits<T>;
  // Whole numbers from 0 on are parsed as unsigned, those below as signed, those beyond 64 bits as
  // floating-point.
  const bool fits =
      json.is_number_unsigned()
          ? json.get<std::uint64_t>() <= static_cast<std::uint64_t>(Limits::max())
          : json.is_number_integer() && json.get<std::int64_t>() >= static_cast<std::int64_t>(Limits::min());
  if (fits) value = json.get<T>();
  return fits;
}
bool convert(const Json& json, std::uint32_t& value) {
  return convertInteger(json, value);
}
bool convert(const Json& json, std::int32_t& value) {
  return convertInteger(json, value);
}
bool convert(const Json& json, std::uint64_t& value) {
  return convertInteger(json, value);
}

bool convert(const Json& json, double& value) {
  if (json.is_number()) {
    value = json.get<double>();
    return true;
  }
  if (json == "nan")
    value = std::numeric_limits<double>::quiet_NaN();
  else if (json == "inf")
    value = std::numeric_limits<double>::infinity();
  else if (json == "-inf")
    value = -std::numeric_limits<double>::infinity();
  else
    return false;
  return true;
}

bool convert(const Json& json, float& value) {
  double wide;
  if (!convert(json, wide)) return false;
  const float narrow = static_cast<float>(wide);
  if (std::isinf(narrow) && !std::isinf(wide)) return false;
  value = narrow;
  return true;
}

bool convert(const Json& json, std::string& value) {
  if (!json.is_string()) return false;
  value = json.get_ref<const std::string&>();
  return true;
}

bool convert(const Json& json, std::vector<unsigned char>& value) {
  std::vector<unsigned char> bytes;
  if (!json.is_string() || !fromBase64(json.get_ref<const std::string&>(), bytes)) return false;
  value = std::move(bytes);
  return true;
}

}  // namespace

struct JsonIArchive::Impl {
  Sections sections;
  std::vector<const Section*> open;
  std::vector<std::string> names;  ///< of the open sections

  [[noreturn]] void fail(const std::string& name, const std::string& why) const {
    std::string path;
    for (const std::string& section : names) path += section + "/";
    SerializationModule::raise(VEXO_HERE, "cannot read " + quote(path + name) + ": " + why);
  }

  const Section::Item& find(const std::string& name) const {
    const auto found = open.back()->items.find(name);
    if (found == open.back()->items.end()) fail(name, "it is missing");
    return found->second;
  }

  template <class T>
  void read(const std::string& name, T& value, const char* wanted) const {
    const Section::Item& item = find(name);
    if (item.section || !convert(item.value, value)) fail(name, std::string("its value is not ") + wanted);
  }
};

JsonIArchive::JsonIArchive(const std::string& text, const JsonLimits& limits)
    : _impl(std::make_unique<Impl>()) {
  try {
    parse(text, limits, _impl->sections);
    _impl->open.push_back(&_impl->sections.front());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& foreign) {
    // A parser message quotes the text, which may be long and hostile.
    SerializationModule::raise(VEXO_HERE, "the text is no archive: " + cut(foreign.what()));
  }
}
JsonIArchive::~JsonIArchive() = default;

void JsonIArchive::openSection(const std::string& name) {
  const Section::Item& item = _impl->find(name);
  if (!item.section) _impl->fail(name, "it is not a section");
  _impl->names.push_back(name);
  try {
    _impl->open.push_back(item.section);
  } catch (...) {
    _impl->names.pop_back();
    throw;
  }
}

void JsonIArchive::closeSection() {
  if (_impl->names.empty()) SerializationModule::raise(VEXO_HERE, "cannot close a section: none is open");
  _impl->names.pop_back();
  _impl->open.pop_back();
}

std::vector<std::string> JsonIArchive::getNames() const {
  std::vector<std::string> names;
  for (const auto& [name, item] : _impl->open.back()->items) names.push_back(name);
  return names;
}

bool JsonIArchive::has(const std::string& name) const {
  return _impl->open.back()->items.count(name) != 0;
}

void JsonIArchive::read(const std::string& name, bool& value) const {
  _impl->read(name, value, "true or false");
}
void JsonIArchive::read(const std::string& name, std::uint32_t& value) const {
  _impl->read(name, value, "a whole number from 0 to 4294967295");
}
void JsonIArchive::read(const std::string& name, std::int32_t& value) const {
  _impl->read(name, value, "a whole number from -2147483648 to 2147483647");
}
void JsonIArchive::read(const std::string& name, std::uint64_t& value) const {
  _impl->read(name, value, "a whole number from 0 to 18446744073709551615");
}
void JsonIArchive::read(const std::string& name, float& value) const {
  _impl->read(name, value, "a 32-bit floating-point number");
}
void JsonIArchive::read(const std::string& name, double& value) const {
  _impl->read(name, value, "a number");
}
void JsonIArchive::read(const std::string& name, std::string& value) const {
  _impl->read(name, value, "a text");
}
void JsonIArchive::readBytes(const std::string& name, std::vector<unsigned char>& value) const {
  _impl->read(name, value, "base64 text");
}

}  // namespace vexo
