#include <cmath>
#include <deque>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "Base64.h"
#include "VEXOCore/Log.h"
#include "VEXOCore/Quote.h"
#include "VEXOSerialization/JsonArchive.h"
#include "VEXOSerialization/SerializationMessages.h"

namespace vexo {

using Json = nlohmann::json;

namespace {

Json toJson(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  return value;
}

/// The double that prints with the few digits of the float, when reading it back as float is sure to give the
/// same.
double shortest(float value) {
  double printed = value;
  ScalarText<double>::fromText(ScalarText<float>::toText(value), printed);
  return static_cast<float>(printed) == value ? printed : value;
}

/// Throws when the text is no UTF-8.
std::string toJsonText(const std::string& text) {
  return Json(text).dump();
}

/// Sections, and values as they will be printed. A tree of our own, because a JSON object of the library asks
/// for memory when it is destroyed, where a failure would end the process.
struct Section {
  struct Item {
    std::string name, value;
    const Section* section = nullptr;  ///< null when the item is a value
  };
  std::vector<Item> items;
  std::set<std::string> names;

  void print(const std::string& indent, std::string& text) const {
    const std::string inner = indent + "  ";
    const char* separator = "{";
    for (const Item& item : items) {
      text += separator + ("\n" + inner) + toJsonText(item.name) + ": ";
      if (item.section)
        item.section->print(inner, text);
      else
        text += item.value;
      separator = ",";
    }
    text += items.empty() ? "{}" : "\n" + indent + "}";
  }
};

}  // namespace

struct JsonOArchive::Impl {
  std::deque<Section> sections{1};  ///< the root first; they stay where they are
  std::vector<Section*> open{&sections.front()};

  Section::Item& add(const std::string& name) {
    Section& section = *open.back();
    // Fails now on what is no UTF-8 rather than when the whole is printed.
    toJsonText(name);
    if (section.names.count(name) != 0) throw std::runtime_error("the name is already used in its section");
    section.items.push_back({name, "", nullptr});
    try {
      section.names.insert(name);
    } catch (...) {
      section.items.pop_back();
      throw;
    }
    return section.items.back();
  }

  /// Adds an item and fills it; a failure leaves the archive as it was.
  template <class Fill>
  void put(const std::string& name, const Fill& fill) {
    try {
      Section::Item filled;
      fill(filled);
      Section::Item& item = add(name);
      item.value.swap(filled.value);
      item.section = filled.section;
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& foreign) {
      SerializationModule::raise(VEXO_HERE, "cannot write " + quote(name) + ": " + foreign.what());
    }
  }
  void putValue(const std::string& name, const Json& value) {
    put(name, [&value](Section::Item& item) { item.value = value.dump(); });
  }
};

JsonOArchive::JsonOArchive() : _impl(std::make_unique<Impl>()) {}
JsonOArchive::~JsonOArchive() = default;

void JsonOArchive::openSection(const std::string& name) {
  _impl->open.reserve(_impl->open.size() + 1);  // so that nothing fails once the section is there
  Section& section = _impl->sections.emplace_back();
  _impl->put(name, [&section](Section::Item& item) { item.section = &section; });
  _impl->open.push_back(&section);
}

void JsonOArchive::closeSection() {
  if (_impl->open.size() == 1) SerializationModule::raise(VEXO_HERE, "cannot close a section: none is open");
  _impl->open.pop_back();
}

void JsonOArchive::write(const std::string& name, bool value) {
  _impl->putValue(name, value);
}
void JsonOArchive::write(const std::string& name, std::uint32_t value) {
  _impl->putValue(name, value);
}
void JsonOArchive::write(const std::string& name, std::int32_t value) {
  _impl->putValue(name, value);
}
void JsonOArchive::write(const std::string& name, std::uint64_t value) {
  _impl->putValue(name, value);
}
void JsonOArchive::write(const std::string& name, float value) {
  _impl->putValue(name, toJson(shortest(value)));
}
void JsonOArchive::write(const std::string& name, double value) {
  _impl->putValue(name, toJson(value));
}
void JsonOArchive::write(const std::string& name, const std::string& value) {
  _impl->putValue(name, value);
}
void JsonOArchive::writeBytes(const std::string& name, const std::vector<unsigned char>& value) {
  _impl->putValue(name, toBase64(value));
}

std::string JsonOArchive::getText() const {
  std::string text;
  _impl->sections.front().print("", text);
  return text;
}

}  // namespace vexo
