#pragma once

// Loaders and storers: rows of samples of any type to and from lines of floats. A kernel that works on float lines
// serves all pairs of types with the seven of each.

#include <stddef.h>

#include "VEXOImage/StripView.h"
#include "VEXOProcessing/Kernel/Convert.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// Reads the sample at any address.
template <class T>
inline T readSample(const unsigned char* p) {
  T value;
  __builtin_memcpy(&value, p, sizeof value);
  return value;
}

/// Reads a sample left or right of the image.
template <class T>
inline T readBorderSample(const image::StripSource& s, const unsigned char* row, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z) {
  const bool copied = s.saved && s.cutAxis == 0;
  if (row && s.border == image::eBorder::Mirror && !copied) {  // by far the most frequent case: without a division
    const ptrdiff_t mirrored = x < 0 ? -1 - x : 2 * s.size[0] - 1 - x;
    if (mirrored >= 0 && mirrored < s.size[0]) return readSample<T>(row + mirrored * ptrdiff_t(sizeof(T)));
  }
  const unsigned char* sample = image::sourceSample(s, x, y, z);
  return readSample<T>(sample ? sample : s.constant);
}

/// A processor::LoadLine. Integers of 32 bits become the nearest float.
template <class T>
void loadLine(float* line, const image::StripSource& s, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
  constexpr ptrdiff_t size = sizeof(T);
  const unsigned char* row = image::sourceRow(s, y, z);
  const bool copied = s.saved && s.cutAxis == 0;
  const ptrdiff_t first = copied ? s.begin[0] : 0, last = copied ? s.end[0] : s.size[0];
  ptrdiff_t begin = x < first ? first - x : 0, end = last - x < n ? last - x : n;  // the part that lies in the row
  if (!row || begin >= end) begin = end = n;
  for (ptrdiff_t i = 0; i < begin; ++i) line[i] = float(readBorderSample<T>(s, row, x + i, y, z));
  for (ptrdiff_t i = begin; i < end; ++i) line[i] = float(readSample<T>(row + (x + i) * size));
  for (ptrdiff_t i = end; i < n; ++i) line[i] = float(readBorderSample<T>(s, row, x + i, y, z));
}

/// A processor::StoreLine for integers.
template <class T, eConversion conversion>
void storeLine(const image::StripTarget& t, const float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
  constexpr ptrdiff_t size = sizeof(T);
  unsigned char* row = image::targetRow(t, y, z) + (x - t.begin[0]) * size;
  ptrdiff_t i = 0;
  for (; n - i >= convertedAtOnce; i += convertedAtOnce) convertBlock<T, conversion>(row + i * size, line + i);
  if (i == n) return;
  float rest[convertedAtOnce] = {};
  unsigned char samples[convertedAtOnce * size];
  __builtin_memcpy(rest, line + i, size_t(n - i) * sizeof(float));
  convertBlock<T, conversion>(samples, rest);
  __builtin_memcpy(row + i * size, samples, size_t((n - i) * size));
}

/// A processor::StoreLine for floats, as they are.
inline void storeFloatLine(const image::StripTarget& t, const float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z,
                           ptrdiff_t n) {
#ifdef NT
  unsigned char* p = image::targetRow(t, y, z) + (x - t.begin[0]) * ptrdiff_t(sizeof(float));
  ptrdiff_t i = 0;
  if ((size_t(p) & 3) == 0) {
    for (; i < n && (size_t(p + 4 * i) & 63); ++i) __builtin_memcpy(p + 4 * i, line + i, 4);
    for (; i + 16 <= n; i += 16) {
      for (int k = 0; k < 16; k += lanesOf<FloatV>)
#if defined(__AVX512F__)
      _mm512_stream_ps((float*)(p + 4 * (i + k)), loadVector<FloatV>(line + i + k));
#elif defined(__AVX__)
      _mm256_stream_ps((float*)(p + 4 * (i + k)), loadVector<FloatV>(line + i + k));
#else
      _mm_stream_ps((float*)(p + 4 * (i + k)), loadVector<FloatV>(line + i + k));
#endif
    }
  }
  __builtin_memcpy(p + 4 * i, line + i, 4 * size_t(n - i));
#else
  __builtin_memcpy(image::targetRow(t, y, z) + (x - t.begin[0]) * ptrdiff_t(sizeof(float)), line,
                   size_t(n) * sizeof(float));
#endif
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
