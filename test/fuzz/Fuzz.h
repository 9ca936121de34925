#pragma once

// What the fuzz targets share. A target reads an input of any bytes; whatever the input, it may only throw a
// BaseException, and what it computes must be consistent. Anything else ends the process by abort().

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>

#include "VEXOCore/BaseException.h"
#include "VEXOImage/Image.h"

/// Runs one input; the name and the answer, 0, are those that fuzzing engines know.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vexo::fuzz {

[[noreturn]] inline void fail(const std::string& what) {
  std::fprintf(stderr, "FOUND: %s\n", what.c_str());
  std::abort();
}
inline void require(bool holds, const std::string& what) {
  if (!holds) fail(what);
}

/// The message of the BaseException that a call throws; empty when it throws none. Nothing else is expected.
template <class Call>
std::string refusalOf(const Call& call) {
  try {
    call();
  } catch (const BaseException& refused) {
    require(!refused.getMessage().empty(), "an exception without a message");
    return refused.getMessage();
  }
  return "";
}

/// Takes decisions from the bytes of an input, one after the other; zeros when they are used up.
class Bytes {
public:
  Bytes(const std::uint8_t* data, std::size_t size) : _data(data), _left(size) {}

  template <class T>
  T take() {
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    const std::size_t n = sizeof(T) < _left ? sizeof(T) : _left;
    if (n > 0) std::memcpy(&value, _data, n);  // an empty input may have no address
    _data += n;
    _left -= n;
    return value;
  }
  /// A number below `count`, which is at most 65536.
  std::size_t below(std::size_t count) {
    return (count <= 256 ? take<std::uint8_t>() : take<std::uint16_t>()) % count;
  }
  bool oneIn(std::size_t count) { return below(count) == count - 1; }
  template <class T, std::size_t count>
  const T& oneOf(const T (&values)[count]) {
    return values[below(count)];
  }
  std::string text(std::size_t length) {
    std::string result;
    while (result.size() < length) result += static_cast<char>(take<std::uint8_t>());
    return result;
  }

private:
  const std::uint8_t* _data;
  std::size_t _left;
};

/// Where the first sample lies that differs in its bits; empty when there is none.
inline std::string findDifference(const image::Image& a, const image::Image& b) {
  const image::ImageGeometry& g = a.getGeometry();
  if (g != b.getGeometry() || a.getBufferType() != b.getBufferType())
    return toString(g) + " of " + toString(a.getBufferType()) + " and " + toString(b.getGeometry()) + " of " +
           toString(b.getBufferType());
  const std::size_t size = getSampleSize(a.getBufferType());
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < g.z; ++z)
        for (std::size_t y = 0; y < g.y; ++y) {
          const auto* one = a.getRow<unsigned char>(y, z, c, t);
          const auto* other = b.getRow<unsigned char>(y, z, c, t);
          if (std::memcmp(one, other, g.x * size) == 0) continue;
          std::size_t x = 0;
          while (std::memcmp(one + x * size, other + x * size, size) == 0) ++x;
          return visitBufferType(a.getBufferType(), [&](auto zero) {
            using T = decltype(zero);
            T v, w;
            std::memcpy(&v, one + x * size, size);
            std::memcpy(&w, other + x * size, size);
            return "x " + std::to_string(x) + " y " + std::to_string(y) + " z " + std::to_string(z) + " c " +
                   std::to_string(c) + " t " + std::to_string(t) + ": " + std::to_string(v) + " and " +
                   std::to_string(w);
          });
        }
  return "";
}

}  // namespace vexo::fuzz
