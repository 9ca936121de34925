#pragma once

// Median of windows of any size, bit by bit: the samples of the window below a candidate are counted, and the
// next bit of the median is set when they are no majority. It takes as many passes over the window as samples
// have bits, but has no branch and no index that depends on them, and runs on as many pixels at once as a
// vector has lanes: for usual windows ten times as fast as a selection per pixel.

#include <stddef.h>

#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/Samples.h"
#include "VEXOProcessing/Kernel/WindowLines.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// Samples as signed integers in the same order, NaN the highest; and back. Counts of samples live in
/// integers of the same size, so that large windows need larger keys than the samples do.
template <class T>
struct KeyOf {
  using Signed = typename IntegersOf<sizeof(T)>::Signed;
  static constexpr int bits = 8 * sizeof(T);
  static constexpr int top = isSigned<T> ? 0 : -1 - int((1u << (bits - 1)) - 1);
  static int fromSample(T sample) {
    if constexpr (isSame<T, float>) {
      int key;
      __builtin_memcpy(&key, &sample, sizeof key);
      key ^= (key >> 31) & 0x7fffffff;
      return sample == sample ? key : 0x7fc00000;
    } else {
      return Signed(int(sample) ^ top);
    }
  }
  static T toSample(int key) {
    if constexpr (isSame<T, float>) {
      float sample;
      key ^= (key >> 31) & 0x7fffffff;
      __builtin_memcpy(&sample, &key, sizeof sample);
      return sample;
    } else {
      return T(key ^ top);
    }
  }
};
template <class T, class Key>
struct LoadedKey {
  Key value;
  LoadedKey() = default;
  explicit LoadedKey(T sample) : value(Key(KeyOf<T>::fromSample(sample))) {}
};

/// The window and the lines that hold it, of keys.
struct SearchLayout : WindowLines {
  int keySize;
  size_t pitch;  ///< bytes of a line

  explicit SearchLayout(const image::StripSource& s) : WindowLines(s) {
    const int needed = count < 256 ? 1 : count < 65536 ? 2 : 4;
    keySize = s.sampleSize > needed ? s.sampleSize : needed;
    // Whole blocks of vectors are read, up to knlX - 1 keys further.
    pitch = size_t(roundUp(width * keySize, 4 * sizeof(FloatV)) + roundUp(knlX * keySize, 64));
    if (pitch % 4096 < 64) pitch += 64;
  }
  bool isCountable() const { return count >> 32 == 0; }
  size_t scratchSize() const {
    if (!isCountable()) return 0;
    return size_t(lineCount) * (pitch + sizeof(void*)) + 64 + size_t(roundUp(width, 64)) * 4;
  }
};

/// The medians of four vectors of pixels at column x of the lines. Out of line: among calls, which keep no
/// vector register, the compiler would read constants from memory in the innermost loop.
template <class T, class Key>
[[gnu::noinline]] void searchBlock(const SearchLayout& l, const Key* const* lines, ptrdiff_t x,
                                   Key* medians) {
  typedef Key V __attribute__((vector_size(sizeof(FloatV))));
  using UnsignedKey = typename IntegersOf<sizeof(Key)>::Unsigned;
  typedef UnsignedKey Bits __attribute__((vector_size(sizeof(FloatV))));  // whose sums may wrap
  constexpr ptrdiff_t lanes = sizeof(V) / sizeof(Key);
  constexpr int bits = KeyOf<T>::bits;
  const V zero = {};
  const Key start = Key(-1 - static_cast<long long>(l.count / 2));
  V found[4];
#pragma GCC unroll 4
  for (int i = 0; i < 4; ++i) found[i] = zero + Key(-1 - static_cast<long long>((1ull << (bits - 1)) - 1));
  for (int bit = bits - 1; bit >= 0; --bit) {
    const UnsignedKey weight = UnsignedKey(1ull << bit);
    V candidates[4], counts[4];  // from -(half + 1): those that reach 0 are a majority
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
      candidates[i] = V(Bits(found[i]) + weight);
      counts[i] = zero + start;
    }
    for (ptrdiff_t r = 0; r < l.lineCount; ++r) {
      const Key* line = lines[r] + x;
      for (ptrdiff_t c = 0; c < l.knlX; ++c)
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i) {
          V keys;
          __builtin_memcpy(&keys, line + c + i * lanes, sizeof keys);
          // With masks for comparisons, adding under them was measured to be faster, but for 32-bit keys.
          if constexpr (sizeof(V) == 64 && sizeof(Key) < 4)
            counts[i] = keys < candidates[i] ? counts[i] + Key(1) : counts[i];
          else
            counts[i] -= keys < candidates[i];
        }
    }
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) found[i] = counts[i] < zero ? candidates[i] : found[i];
  }
  __builtin_memcpy(medians, found, sizeof found);
}

/// All pixels of the strip.
template <class T, class Key>
[[gnu::noinline]] void searchMedians(const processor::ProcessingInfo& info, StoreSamples store) {
  const image::StripSource& s = info.sources[0];
  const SearchLayout l(s);
  constexpr ptrdiff_t block = 4 * ptrdiff_t(sizeof(FloatV) / sizeof(Key));
  unsigned char* const first = info.scratch + roundUp(l.lineCount * ptrdiff_t(sizeof(void*)), 64);
  const Key** lines = reinterpret_cast<const Key**>(info.scratch);
  T* results = reinterpret_cast<T*>(first + size_t(l.lineCount) * l.pitch);
  __builtin_memset(first, 0, size_t(l.lineCount) * l.pitch);  // what vectors read beyond the samples
  for (ptrdiff_t i = 0; i < l.lineCount; ++i)
    lines[i] = reinterpret_cast<const Key*>(first + size_t(i) * l.pitch);
  l.run(
      [&](ptrdiff_t line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z) {
        loadLine<T>(reinterpret_cast<LoadedKey<T, Key>*>(first + size_t(line) * l.pitch), s, x, y, z,
                    l.lineLength);
      },
      [&](ptrdiff_t y, ptrdiff_t z) {
        for (ptrdiff_t x = 0; x < l.width; x += block) {
          Key medians[block];
          searchBlock<T, Key>(l, lines, x, medians);
          for (ptrdiff_t i = 0; i < smaller(block, l.width - x); ++i)
            results[x + i] = KeyOf<T>::toSample(medians[i]);
        }
        store(info.targets[0], reinterpret_cast<const unsigned char*>(results), s.begin[0], y, z, l.width);
      });
}

template <class T>
const char* searchMedians(const processor::ProcessingInfo& info, StoreSamples store) {
  const SearchLayout l(info.sources[0]);
  if (!l.isCountable()) return "the window that its half sizes ask for holds more than 4294967295 samples";
  if constexpr (sizeof(T) == 1)
    if (l.keySize == 1) return searchMedians<T, signed char>(info, store), nullptr;
  if constexpr (sizeof(T) <= 2)
    if (l.keySize == 2) return searchMedians<T, short>(info, store), nullptr;
  return searchMedians<T, int>(info, store), nullptr;
}

inline size_t searchScratchSize(const processor::ProcessingInfo& info) {
  return SearchLayout(info.sources[0]).scratchSize();
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
