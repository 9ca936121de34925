#include "VEXOCore/DataItem.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>
#include <vector>

#include "VEXOCore/Quote.h"

namespace vexo {

BaseDataItemLeaf::~BaseDataItemLeaf() = default;
BaseDataItemNode::~BaseDataItemNode() = default;

namespace {

BoolResult notA(const std::string& text, const char* what) {
  return BoolResult::failure(quote(text) + " is not " + what);
}

template <class T>
std::string numberToText(T value) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof text, value);
  return std::string(text, end.ptr);
}

template <class T>
BoolResult numberFromText(const std::string& text, T& value, const char* what) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  if (begin != end && *begin == '+' && end - begin > 1 && begin[1] != '-') ++begin;
  T parsed{};
  const auto result = std::from_chars(begin, end, parsed);
  if (result.ec != std::errc() || result.ptr != end) return notA(text, what);
  value = parsed;
  return true;
}

}  // namespace

template <>
const char* ScalarText<bool>::typeName() {
  return "bool";
}
template <>
std::string ScalarText<bool>::toText(const bool& value) {
  return value ? "true" : "false";
}
template <>
BoolResult ScalarText<bool>::fromText(const std::string& text, bool& value) {
  if (text != "true" && text != "false") return notA(text, "true or false");
  value = text == "true";
  return true;
}

template <>
const char* ScalarText<std::uint32_t>::typeName() {
  return "unsigned";
}
template <>
std::string ScalarText<std::uint32_t>::toText(const std::uint32_t& value) {
  return numberToText(value);
}
template <>
BoolResult ScalarText<std::uint32_t>::fromText(const std::string& text, std::uint32_t& value) {
  return numberFromText(text, value, "a whole number from 0 to 4294967295");
}

template <>
const char* ScalarText<std::int32_t>::typeName() {
  return "integer";
}
template <>
std::string ScalarText<std::int32_t>::toText(const std::int32_t& value) {
  return numberToText(value);
}
template <>
BoolResult ScalarText<std::int32_t>::fromText(const std::string& text, std::int32_t& value) {
  return numberFromText(text, value, "a whole number from -2147483648 to 2147483647");
}

template <>
const char* ScalarText<float>::typeName() {
  return "float";
}
template <>
std::string ScalarText<float>::toText(const float& value) {
  return numberToText(value);
}
template <>
BoolResult ScalarText<float>::fromText(const std::string& text, float& value) {
  return numberFromText(text, value, "a 32-bit floating-point number");
}

template <>
const char* ScalarText<double>::typeName() {
  return "double";
}
template <>
std::string ScalarText<double>::toText(const double& value) {
  return numberToText(value);
}
template <>
BoolResult ScalarText<double>::fromText(const std::string& text, double& value) {
  return numberFromText(text, value, "a 64-bit floating-point number");
}

template <>
const char* ScalarText<std::string>::typeName() {
  return "text";
}
template <>
std::string ScalarText<std::string>::toText(const std::string& value) {
  return value;
}
template <>
BoolResult ScalarText<std::string>::fromText(const std::string& text, std::string& value) {
  value = text;
  return true;
}

BaseDataItemLeaf* BaseDataItemNode::findLeaf(const std::string& key) {
  for (BaseDataItemLeaf* leaf : _leaves)
    if (leaf->getKey() == key) return leaf;
  return nullptr;
}

std::string dataItemToText(const BaseDataItemNode& item) {
  std::string text;
  for (std::size_t i = 0; i < item.getLeafCount(); ++i)
    text += (i ? "," : "") + item.getLeaf(i).getKey() + "=" + item.getLeaf(i).getText();
  return text;
}

BoolResult dataItemFromText(const std::string& text, BaseDataItemNode& item) {
  std::vector<const BaseDataItemLeaf*> given;
  const auto isGiven = [&](const BaseDataItemLeaf& leaf) {
    return std::find(given.begin(), given.end(), &leaf) != given.end();
  };
  std::istringstream fields(text);
  std::string field;
  for (std::size_t position = 0; std::getline(fields, field, ','); ++position) {
    const auto equals = field.find('=');
    const std::string key = field.substr(0, equals);
    BaseDataItemLeaf* leaf = nullptr;
    if (equals != std::string::npos)
      leaf = item.findLeaf(key);
    else if (position < item.getLeafCount())
      leaf = &item.getLeaf(position);
    if (!leaf) {
      std::string known;
      for (std::size_t i = 0; i < item.getLeafCount(); ++i)
        known += (i ? ", " : "") + item.getLeaf(i).getKey();
      return BoolResult::failure("unknown field " + quote(key) + "; the fields are " + known);
    }
    if (isGiven(*leaf)) return BoolResult::failure(leaf->getKey() + " is given twice");
    given.push_back(leaf);
    if (const BoolResult set = leaf->setText(equals == std::string::npos ? field : field.substr(equals + 1));
        !set)
      return BoolResult::failure(leaf->getKey() + ": " + set.getMessage());
  }
  for (std::size_t i = 0; item.needsAllLeaves() && i < item.getLeafCount(); ++i)
    if (!isGiven(item.getLeaf(i))) return BoolResult::failure(item.getLeaf(i).getKey() + " is missing");
  return true;
}

}  // namespace vexo
