#pragma once

// Loaders and storers: rows of samples of any type to and from lines of floats. A kernel that works on float
// lines serves all pairs of types with the seven of each.

#include <stddef.h>

#include "VEXOImage/StripView.h"
#include "VEXOProcessing/Kernel/Convert.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/Vector.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// Reads the sample at any address.
template <class T>
inline T readSample(const unsigned char* p) {
  T value;
  __builtin_memcpy(&value, p, sizeof value);
  return value;
}

/// Reads samples [x, x + n), one at a time, wherever they lie.
template <class T, class To>
inline void loadSamples(To* line, const image::StripSource& s, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z,
                        ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const unsigned char* sample = image::sourceSample(s, x + i, y, z);
    line[i] = To(readSample<T>(sample ? sample : s.constant));
  }
}

/// A processor::LoadLine; also to lines of another type. Integers of 32 bits become the nearest float.
template <class T, class To = float>
void loadLine(To* line, const image::StripSource& s, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
  constexpr ptrdiff_t size = sizeof(T);
  const unsigned char* row = image::sourceRow(s, y, z);
  if (!row) return loadSamples<T>(line, s, x, y, z, n);

  // Columns [first, last) can be read in the row. With them the line falls into pieces: outside on the left,
  // mirrored on the left, in the row, mirrored on the right, outside on the right. Mirrored pieces spare a
  // division per sample.
  const bool copied = s.saved && s.savedAxis == 0;
  const ptrdiff_t first = copied ? s.begin[0] : 0, last = copied ? s.end[0] : s.size[0];
  const ptrdiff_t mirrored = s.border == image::eBorder::Mirror && !copied ? s.size[0] : 0;
  const ptrdiff_t end = x + n;
  const ptrdiff_t a = clamp(first - mirrored, x, end), b = clamp(first, x, end);
  const ptrdiff_t c = clamp(last, x, end), d = clamp(last + mirrored, x, end);
  loadSamples<T>(line, s, x, y, z, a - x);
  for (ptrdiff_t i = a; i < b; ++i) line[i - x] = To(readSample<T>(row + (-1 - i) * size));
  for (ptrdiff_t i = b; i < c; ++i) line[i - x] = To(readSample<T>(row + i * size));
  for (ptrdiff_t i = c; i < d; ++i) line[i - x] = To(readSample<T>(row + (2 * s.size[0] - 1 - i) * size));
  loadSamples<T>(line + (d - x), s, d, y, z, end - d);
}

/// A processor::StoreLine for integers.
template <class T, eConversion conversion>
void storeLine(const image::StripTarget& t, const float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z,
               ptrdiff_t n) {
  constexpr ptrdiff_t size = sizeof(T);
  unsigned char* row = image::targetRow(t, y, z) + (x - t.begin[0]) * size;
  ptrdiff_t i = 0;
  for (; n - i >= convertedAtOnce; i += convertedAtOnce)
    convertBlock<T, conversion>(row + i * size, line + i);
  if (i == n) return;
  float rest[convertedAtOnce] = {};
  unsigned char samples[convertedAtOnce * size];
  __builtin_memcpy(rest, line + i, size_t(n - i) * sizeof(float));
  convertBlock<T, conversion>(samples, rest);
  __builtin_memcpy(row + i * size, samples, size_t((n - i) * size));
}

/// A processor::StoreLine for floats, as they are.
inline void storeFloatLine(const image::StripTarget& t, const float* line, ptrdiff_t x, ptrdiff_t y,
                           ptrdiff_t z, ptrdiff_t n) {
  unsigned char* row = image::targetRow(t, y, z) + (x - t.begin[0]) * ptrdiff_t(sizeof(float));
  ptrdiff_t i = 0;
  if (t.streamed && reinterpret_cast<size_t>(row) % sizeof(float) == 0) {
    constexpr size_t size = sizeof(FloatV);
    i = smaller(ptrdiff_t((size - reinterpret_cast<size_t>(row) % size) % size / sizeof(float)), n);
    __builtin_memcpy(row, line, size_t(i) * sizeof(float));
    for (; i + lanesOf<FloatV> <= n; i += lanesOf<FloatV>)
      streamVector(reinterpret_cast<float*>(row) + i, loadVector<FloatV>(line + i));
  }
  __builtin_memcpy(row + i * ptrdiff_t(sizeof(float)), line + i, size_t(n - i) * sizeof(float));
}

inline void clearLine(float* line, ptrdiff_t n) {
  __builtin_memset(line, 0, size_t(n) * sizeof(float));
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
