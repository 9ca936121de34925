#pragma once

#include <array>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "VEXOCore/DataItem.h"
#include "VEXOCore/Quote.h"
#include "VEXOCore/TypeName.h"

namespace vexo::processor {

/// Text form of the values that attributes store. Command line, archives and documentation all go through it,
/// so that a new kind of value is stated here once. Without a specialisation a type has no text form (images,
/// strips).
template <class T, class = void>
struct ValueText {
  static constexpr bool available = false;
};

/// bool, 32-bit integers, float, double, std::string.
template <class T>
struct ValueText<T, std::enable_if_t<std::is_arithmetic_v<T> || std::is_same_v<T, std::string>>> {
  static constexpr bool available = true;
  static std::string typeName() { return ScalarText<T>::typeName(); }
  static std::string toText(const T& value) { return ScalarText<T>::toText(value); }
  static BoolResult fromText(const std::string& text, T& value) {
    return ScalarText<T>::fromText(text, value);
  }
};

/// The names of an enumeration, by value from 0. An enumeration used as an attribute specialises this with
///   static constexpr std::array<const char*, N> names = {...};
template <class Enum>
struct EnumNames;

/// An enumeration: a name, or a number. A number without a name is passed on: what it means is the
/// processor's to say.
template <class T>
struct ValueText<T, std::enable_if_t<std::is_enum_v<T>>> {
  static constexpr bool available = true;
  static std::string typeName() {
    std::string text;
    for (const char* name : EnumNames<T>::names) text += (text.empty() ? "" : "|") + std::string(name);
    return text;
  }
  static std::string toText(const T& value) {
    const auto index = static_cast<std::size_t>(value);
    return index < EnumNames<T>::names.size() ? EnumNames<T>::names[index] : std::to_string(index);
  }
  static BoolResult fromText(const std::string& text, T& value) {
    for (std::size_t i = 0; i < EnumNames<T>::names.size(); ++i)
      if (text == EnumNames<T>::names[i]) {
        value = static_cast<T>(i);
        return true;
      }
    std::uint32_t number = 0;
    if (!ScalarText<std::uint32_t>::fromText(text, number))
      return BoolResult::failure(quote(text) + " is none of " + typeName());
    value = static_cast<T>(number);
    return true;
  }
};

/// A shared data item, read-only or to be filled: its fields.
template <class T>
struct ValueText<boost::shared_ptr<T>, std::enable_if_t<std::is_base_of_v<BaseDataItemNode, T>>> {
  static constexpr bool available = true;
  static std::string typeName() { return shortTypeName(vexo::typeName<std::remove_const_t<T>>()); }
  static std::string toText(const boost::shared_ptr<T>& value) { return dataItemToText(*value); }
  static BoolResult fromText(const std::string& text, boost::shared_ptr<T>& value) {
    const auto parsed = boost::make_shared<std::remove_const_t<T>>();
    if (const BoolResult result = dataItemFromText(text, *parsed); !result) return result;
    value = parsed;
    return true;
  }
};

/// A shared read-only object with toText() and a static fromText(text, object): kernels, border policies.
template <class T>
struct ValueText<boost::shared_ptr<const T>, std::void_t<decltype(std::declval<const T&>().toText())>> {
  static constexpr bool available = true;
  static std::string typeName() { return shortTypeName(vexo::typeName<T>()); }
  static std::string toText(const boost::shared_ptr<const T>& value) { return value->toText(); }
  static BoolResult fromText(const std::string& text, boost::shared_ptr<const T>& value) {
    const auto parsed = boost::make_shared<T>();
    if (const BoolResult result = T::fromText(text, *parsed); !result) return result;
    value = parsed;
    return true;
  }
};

}  // namespace vexo::processor
