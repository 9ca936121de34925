#include <cmath>
#include <nlohmann/json.hpp>

#include "Base64.h"
#include "VEXOCore/Log.h"
#include "VEXOSerialization/JsonArchive.h"
#include "VEXOSerialization/SerializationMessages.h"

namespace vexo {

using Json = nlohmann::ordered_json;

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

/// Fails now on what is no UTF-8 rather than when the whole is printed.
Json checkedText(const std::string& text) {
  Json json(text);
  json.dump();
  return json;
}

}  // namespace

struct JsonOArchive::Impl {
  Json root = Json::object();
  /// From the root to the open section. A section does not move while one inside it is open.
  std::vector<Json*> open{&root};

  template <class MakeValue>
  Json& put(const std::string& name, const MakeValue& makeValue) {
    std::string why;
    try {
      checkedText(name);
      const auto [place, added] = open.back()->emplace(name, makeValue());
      if (added) return *place;
      why = "the name is already used in its section";
    } catch (const Json::exception& foreign) {
      why = foreign.what();
    }
    raise<UnHandleException>(getSerializationLogger(), VEXO_HERE, "cannot write '" + name + "': " + why);
  }
};

JsonOArchive::JsonOArchive() : _impl(std::make_unique<Impl>()) {}
JsonOArchive::~JsonOArchive() = default;

void JsonOArchive::openSection(const std::string& name) {
  Json& section = _impl->put(name, [] { return Json::object(); });
  _impl->open.push_back(&section);
}

void JsonOArchive::closeSection() {
  if (_impl->open.size() == 1)
    raise<UnHandleException>(getSerializationLogger(), VEXO_HERE, "cannot close a section: none is open");
  _impl->open.pop_back();
}

void JsonOArchive::write(const std::string& name, bool value) {
  _impl->put(name, [&] { return value; });
}
void JsonOArchive::write(const std::string& name, std::uint32_t value) {
  _impl->put(name, [&] { return value; });
}
void JsonOArchive::write(const std::string& name, std::int32_t value) {
  _impl->put(name, [&] { return value; });
}
void JsonOArchive::write(const std::string& name, std::uint64_t value) {
  _impl->put(name, [&] { return value; });
}
void JsonOArchive::write(const std::string& name, float value) {
  _impl->put(name, [&] { return toJson(shortest(value)); });
}
void JsonOArchive::write(const std::string& name, double value) {
  _impl->put(name, [&] { return toJson(value); });
}
void JsonOArchive::write(const std::string& name, const std::string& value) {
  _impl->put(name, [&] { return checkedText(value); });
}
void JsonOArchive::writeBytes(const std::string& name, const std::vector<unsigned char>& value) {
  _impl->put(name, [&] { return toBase64(value); });
}

std::string JsonOArchive::getText() const {
  return _impl->root.dump(2);
}

}  // namespace vexo
