#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>

#include "Base64.h"
#include "VEXOCore/Log.h"
#include "VEXOSerialization/JsonArchive.h"
#include "VEXOSerialization/SerializationMessages.h"

namespace vexo {

/// Sorted members: finding one among very many stays fast.
using Json = nlohmann::json;

namespace {

/// What no archive has is refused here, as soon as the parser meets it. The parser itself does not recurse.
class StructureCheck {
public:
  explicit StructureCheck(std::size_t maxDepth) : _maxDepth(maxDepth) {}

  void operator()(Json::parse_event_t event, const Json& parsed) {
    switch (event) {
      case Json::parse_event_t::array_start:
        throw std::runtime_error("it has an array");
      case Json::parse_event_t::object_start:
        if (_names.size() > _maxDepth)
          throw std::runtime_error("its sections are nested deeper than " + std::to_string(_maxDepth));
        _names.emplace_back();
        break;
      case Json::parse_event_t::object_end:
        _names.pop_back();
        break;
      case Json::parse_event_t::key:
        if (const auto& name = parsed.get_ref<const std::string&>(); !_names.back().insert(name).second)
          throw std::runtime_error("the name '" + name + "' occurs twice in a section");
        break;
      default:
        break;
    }
  }

private:
  const std::size_t _maxDepth;
  std::vector<std::set<std::string>> _names;  ///< of each open object
};

Json parse(const std::string& text, const JsonLimits& limits) {
  if (text.size() > limits.maxTextSize)
    throw std::runtime_error("its size, " + std::to_string(text.size()) + " bytes, is over the limit of " +
                             std::to_string(limits.maxTextSize));
  StructureCheck check(limits.maxDepth);
  Json root = Json::parse(text, [&check](int, Json::parse_event_t event, const Json& parsed) {
    check(event, parsed);
    return true;
  });
  if (!root.is_object()) throw std::runtime_error("it is a single value");
  return root;
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
  Json root;
  std::vector<const Json*> open{&root};
  std::vector<std::string> names;  ///< of the open sections

  [[noreturn]] void fail(const std::string& name, const std::string& why) const {
    std::string path;
    for (const std::string& section : names) path += section + "/";
    raise<UnHandleException>(getSerializationLogger(), VEXO_HERE,
                             "cannot read '" + path + name + "': " + why);
  }

  const Json& find(const std::string& name) const {
    const auto found = open.back()->find(name);
    if (found == open.back()->end()) fail(name, "it is missing");
    return *found;
  }

  template <class T>
  void read(const std::string& name, T& value, const char* wanted) const {
    if (!convert(find(name), value)) fail(name, std::string("its value is not ") + wanted);
  }
};

JsonIArchive::JsonIArchive(const std::string& text, const JsonLimits& limits)
    : _impl(std::make_unique<Impl>()) {
  try {
    _impl->root = parse(text, limits);
  } catch (const std::exception& foreign) {
    // A parser message quotes the text, which may be long and hostile.
    raise<UnHandleException>(getSerializationLogger(), VEXO_HERE,
                             "the text is no archive: " + std::string(foreign.what()).substr(0, 300));
  }
}
JsonIArchive::~JsonIArchive() = default;

void JsonIArchive::openSection(const std::string& name) {
  const Json& section = _impl->find(name);
  if (!section.is_object()) _impl->fail(name, "it is not a section");
  _impl->names.push_back(name);
  _impl->open.push_back(&section);
}

void JsonIArchive::closeSection() {
  if (_impl->names.empty())
    raise<UnHandleException>(getSerializationLogger(), VEXO_HERE, "cannot close a section: none is open");
  _impl->names.pop_back();
  _impl->open.pop_back();
}

std::vector<std::string> JsonIArchive::getNames() const {
  std::vector<std::string> names;
  for (const auto& item : _impl->open.back()->items()) names.push_back(item.key());
  return names;
}

bool JsonIArchive::has(const std::string& name) const {
  return _impl->open.back()->contains(name);
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
