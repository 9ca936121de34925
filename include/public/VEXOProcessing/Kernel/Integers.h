#pragma once

// Integer types and arithmetic for kernel sources, which may not use the standard library's.

#include <stddef.h>

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// The integer types of so many bytes.
template <size_t size>
struct IntegersOf;
template <>
struct IntegersOf<1> {
  using Signed = signed char;
  using Unsigned = unsigned char;
};
template <>
struct IntegersOf<2> {
  using Signed = short;
  using Unsigned = unsigned short;
};
template <>
struct IntegersOf<4> {
  using Signed = int;
  using Unsigned = unsigned;
};

inline ptrdiff_t smaller(ptrdiff_t a, ptrdiff_t b) {
  return a < b ? a : b;
}
inline ptrdiff_t larger(ptrdiff_t a, ptrdiff_t b) {
  return a < b ? b : a;
}
inline ptrdiff_t clamp(ptrdiff_t v, ptrdiff_t low, ptrdiff_t high) {
  return larger(low, smaller(v, high));
}
inline ptrdiff_t divideUp(ptrdiff_t n, ptrdiff_t by) {
  return (n + by - 1) / by;
}
inline ptrdiff_t roundUp(ptrdiff_t n, ptrdiff_t to) {
  return divideUp(n, to) * to;
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
