#pragma once

// What the medians by minimum and maximum share: values that every instruction set can compare, exchanges,
// and lists of exchanges that the compiler unrolls. Of an exchange whose one half nobody reads, only the
// other is computed.

#include <stddef.h>

#include "VEXOProcessing/Kernel/Samples.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

template <size_t size, bool real>
struct RankOf {
  using Type = int;
};
template <>
struct RankOf<1, false> {
  using Type = unsigned char;
};
template <>
struct RankOf<2, false> {
  using Type = short;
};
template <>
struct RankOf<4, true> {
  using Type = float;
};

/// A sample of type T as lines hold it. SSE2 has the minimum of integers of 8 bits without sign and of 16
/// bits with sign only; flipping the top bit of the others keeps their order.
template <class T>
struct Rank {
  using Type = typename RankOf<sizeof(T), isSame<T, float>>::Type;
  static constexpr Type flip = isSigned<T> == isSigned<Type> ? Type(0) : Type(1ll << (8 * sizeof(T) - 1));
  Type value;
  Rank() = default;
  explicit Rank(T sample) : value(flipped(Type(sample))) {}

  template <class V>
  static V flipped(V v) {
    if constexpr (isSigned<T> == isSigned<Type>)
      return v;
    else
      return V(v ^ flip);
  }
};

template <class T>
struct RankVector {
  typedef typename Rank<T>::Type Type __attribute__((vector_size(sizeof(FloatV))));
};
template <class V, class T>
inline V loadRanks(const T* p) {
  V v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}
template <class V, class T>
inline void storeRanks(T* p, V v) {
  __builtin_memcpy(p, &v, sizeof v);
}

// lower and higher of the same two values are always both of them, NaN or not.
template <class V>
inline V lower(V a, V b) {
  return b < a ? b : a;
}
template <class V>
inline V higher(V a, V b) {
  return b < a ? a : b;
}
template <class V>
inline void exchange(V& a, V& b) {
  const V low = lower(a, b), high = higher(a, b);
  a = low;
  b = high;
}
template <class V>
inline V medianOfThree(V a, V b, V c) {
  exchange(a, b);
  return higher(a, lower(b, c));
}

/// Brings the lower of two values to one place and the higher to the other.
struct Exchange {
  int low, high;
};
template <size_t n>
struct Network {
  static constexpr size_t size = n;
  Exchange exchanges[n];
};
template <size_t n>
Network(const Exchange (&)[n]) -> Network<n>;

template <const auto& network, size_t i = 0, class V>
[[gnu::always_inline]] inline void apply(V* values) {
  if constexpr (i < network.size) {
    constexpr Exchange e = network.exchanges[i];
    exchange(values[e.low], values[e.high]);
    apply<network, i + 1>(values);
  }
}

constexpr Network<3> sortThree = {{{0, 1}, {1, 2}, {0, 1}}};
constexpr Network<5> sortFour = {{{0, 1}, {2, 3}, {0, 2}, {1, 3}, {1, 2}}};
/// Into four sorted values, a fifth at index 4: from above, so that the order is 4, 0, 1, 2, 3; the highest
/// cost least.
constexpr Network<4> insertFromAbove = {{{4, 3}, {4, 2}, {4, 1}, {4, 0}}};
/// From below, so that the order is 0 to 4; the lowest cost least.
constexpr Network<4> insertFromBelow = {{{0, 4}, {1, 4}, {2, 4}, {3, 4}}};

/// Rows loaded once, each into a line of ranks with its margins, and medians of two rows at a time.
template <class T, int half>
struct MedianLines {
  using Value = typename Rank<T>::Type;
  static constexpr int ringSize = 2 * half + 2;
  static constexpr int lineCount = ringSize + 2;

  /// Bytes: vectors may read up to one beyond the samples. Not a multiple of 4096, where the cache would
  /// hold few lines.
  static size_t pitch(const image::StripSource& s) {
    const ptrdiff_t samples = s.end[0] - s.begin[0] + 2 * half;
    const ptrdiff_t bytes = roundUp(samples * s.sampleSize, 64) + 128;
    return size_t(bytes % 4096 < 128 ? bytes + 128 : bytes);
  }

  /// Runs medians(rows, results, width) for each two rows: the ringSize lines around them, from column -half
  /// on; the results are samples, whole vectors. The last row may come alone, then twice.
  template <class Medians>
  static void run(const processor::ProcessingInfo& info, StoreSamples store, Medians medians) {
    const image::StripSource& s = info.sources[0];
    const size_t linePitch = pitch(s);
    const ptrdiff_t width = s.end[0] - s.begin[0];
    __builtin_memset(info.scratch, 0, lineCount * linePitch);  // what vectors read beyond the samples
    const auto line = [&](ptrdiff_t i) { return info.scratch + size_t(i) * linePitch; };
    for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z) {
      const auto slot = [&](ptrdiff_t y) { return line((y - s.begin[1] + half) % ringSize); };
      const auto load = [&](ptrdiff_t y) {
        loadLine<T>(reinterpret_cast<Rank<T>*>(slot(y)), s, s.begin[0] - half, y, z, width + 2 * half);
      };
      for (ptrdiff_t y = -half; y < half; ++y) load(s.begin[1] + y);
      for (ptrdiff_t y = s.begin[1]; y < s.end[1]; y += 2) {
        if (image::isStopped(s)) return;
        const bool pair = y + 1 < s.end[1];
        load(y + half);
        if (pair) load(y + 1 + half);
        const Value* rows[ringSize];
        for (int i = 0; i < ringSize; ++i)
          rows[i] = reinterpret_cast<const Value*>(slot(y - half + (pair || i <= 2 * half ? i : 2 * half)));
        Value* const results[2] = {reinterpret_cast<Value*>(line(ringSize)),
                                   reinterpret_cast<Value*>(line(ringSize + 1))};
        medians(rows, results, width);
        for (int i = 0; i <= int(pair); ++i)
          store(info.targets[0], line(ringSize + i), s.begin[0], y + i, z, width);
      }
    }
  }
};

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
