#pragma once

// What strips add up and levels combine. Kernel sources read this header: plain data, and functions with
// internal linkage.

namespace vexo::imaproc::glbmsr {

using WideInteger = unsigned __int128;

/// Of integer samples, less the lowest value of their type so that all are unsigned: exact.
struct IntegerSums {
  long long lowest;
  unsigned minimum, maximum;
  unsigned long long count;
  WideInteger sum, squares;
};

/// A sum with what its additions have rounded off.
struct CompensatedSum {
  double value, rest;
};

/// Of float samples. The squares are those of the deviations from the mean, which an offset does not spoil.
/// Without any sample but NaN the minimum is above the maximum.
struct RealSums {
  float minimum, maximum;
  unsigned long long count;
  CompensatedSum sum, squares;
};

/// Of an image, a plane or a strip: one of the two is empty.
struct StatsMsrSums {
  IntegerSums integers;
  RealSums reals;
};

/// What the kernel is told besides its strip.
struct StatsMsrParameters {
  StatsMsrSums* sums;  ///< receives the result
};

static inline StatsMsrSums emptySums() {
  return {{0, ~0u, 0, 0, 0, 0}, {__builtin_inff(), -__builtin_inff(), 0, {0, 0}, {0, 0}}};
}

static inline double valueOf(const CompensatedSum& sum) {
  // Of infinities and NaN the rest says nothing.
  return sum.value - sum.value == 0 ? sum.value + sum.rest : sum.value;
}

static inline void add(CompensatedSum& sum, double x) {
  const double total = sum.value + x;
  const bool xIsSmaller = __builtin_fabs(x) <= __builtin_fabs(sum.value);
  sum.rest += xIsSmaller ? (sum.value - total) + x : (x - total) + sum.value;
  sum.value = total;
}

static inline void add(CompensatedSum& sum, const CompensatedSum& other) {
  add(sum, other.value);
  sum.rest += other.rest;
}

static inline void add(IntegerSums& sums, const IntegerSums& other) {
  if (other.count == 0) return;
  sums.lowest = other.lowest;
  sums.minimum = other.minimum < sums.minimum ? other.minimum : sums.minimum;
  sums.maximum = other.maximum > sums.maximum ? other.maximum : sums.maximum;
  sums.count += other.count;
  sums.sum += other.sum;
  sums.squares += other.squares;
}

static inline void add(RealSums& sums, const RealSums& other) {
  if (other.count == 0) return;
  sums.minimum = other.minimum < sums.minimum ? other.minimum : sums.minimum;
  sums.maximum = other.maximum > sums.maximum ? other.maximum : sums.maximum;
  add(sums.squares, other.squares);
  if (sums.count != 0) {
    const double n = double(sums.count), m = double(other.count);
    const double distance = valueOf(other.sum) / m - valueOf(sums.sum) / n;
    add(sums.squares, distance * distance * (n * (m / (n + m))));
  }
  add(sums.sum, other.sum);
  sums.count += other.count;
}

static inline void add(StatsMsrSums& sums, const StatsMsrSums& other) {
  add(sums.integers, other.integers);
  add(sums.reals, other.reals);
}

}  // namespace vexo::imaproc::glbmsr
