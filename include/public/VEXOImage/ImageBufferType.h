#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "VEXOCore/BoolResult.h"
#include "VEXOCore/Export.h"

namespace vexo::image {

/// Type of the samples of an image.
enum class eImageBufferType { UInt8, Int8, UInt16, Int16, UInt32, Int32, Real32 };
constexpr std::size_t imageBufferTypeCount = 7;

/// Bytes of one sample.
VEXO_API std::size_t getSampleSize(eImageBufferType type);
/// "uint8", "int8", "uint16", "int16", "uint32", "int32", "float32".
VEXO_API const char* toString(eImageBufferType type);
/// The type of that name; false with the list of names when there is none.
VEXO_API BoolResult fromString(const std::string& name, eImageBufferType& type);

/// The enumerator of a sample type.
template <class T>
constexpr eImageBufferType bufferTypeOf() {
  if constexpr (std::is_same_v<T, std::uint8_t>) return eImageBufferType::UInt8;
  if constexpr (std::is_same_v<T, std::int8_t>) return eImageBufferType::Int8;
  if constexpr (std::is_same_v<T, std::uint16_t>) return eImageBufferType::UInt16;
  if constexpr (std::is_same_v<T, std::int16_t>) return eImageBufferType::Int16;
  if constexpr (std::is_same_v<T, std::uint32_t>) return eImageBufferType::UInt32;
  if constexpr (std::is_same_v<T, std::int32_t>) return eImageBufferType::Int32;
  if constexpr (std::is_same_v<T, float>) return eImageBufferType::Real32;
}

/// Calls function(T()) with T the sample type.
template <class Function>
decltype(auto) visitBufferType(eImageBufferType type, Function&& function) {
  switch (type) {
    case eImageBufferType::UInt8:
      return function(std::uint8_t());
    case eImageBufferType::Int8:
      return function(std::int8_t());
    case eImageBufferType::UInt16:
      return function(std::uint16_t());
    case eImageBufferType::Int16:
      return function(std::int16_t());
    case eImageBufferType::UInt32:
      return function(std::uint32_t());
    case eImageBufferType::Int32:
      return function(std::int32_t());
    case eImageBufferType::Real32:
      break;
  }
  return function(float());
}

}  // namespace vexo::image
