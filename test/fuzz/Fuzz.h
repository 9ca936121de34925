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
#include "tools/Images.h"

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

}  // namespace vexo::fuzz
