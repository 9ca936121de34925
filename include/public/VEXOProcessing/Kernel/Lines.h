#pragma once

// Loaders and storers: rows of samples of any type to and from lines of floats. A kernel that works on float
// lines serves all pairs of types with the seven of each.

#include <stddef.h>

#include "VEXOImage/StripView.h"
#include "VEXOProcessing/Kernel/Convert.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"
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

// What a line holds beyond its row is little: its loops, out of line or no vectors, are kept small.

/// Reads samples [x, x + n) of the row (y, z), one at a time, wherever they lie.
template <class T, class To>
[[gnu::noinline]] void loadSamples(To* line, const image::StripSource& s, const unsigned char* row,
                                   ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const unsigned char* sample = image::sourceSample(s, row, x + i, y, z);
    line[i] = To(readSample<T>(sample ? sample : s.constant));
  }
}

/// Reads n samples from `last` backwards.
template <class T, class To>
inline void loadMirrored(To* line, const unsigned char* last, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    line[i] = To(readSample<T>(last - i * ptrdiff_t(sizeof(T))));
    __asm__ volatile("");  // no vectors
  }
}

/// A processor::LoadLine; also to lines of another type. Integers of 32 bits become the nearest float.
template <class T, class To = float>
void loadLine(To* line, const image::StripSource& s, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
  constexpr ptrdiff_t size = sizeof(T);
  const unsigned char* row = image::sourceRow(s, y, z);
  if (!row) return loadSamples<T>(line, s, row, x, y, z, n);

  // Columns [first, last) can be read in the row. With them the line falls into pieces: outside on the left,
  // mirrored on the left, in the row, mirrored on the right, outside on the right. Mirrored pieces spare a
  // division per sample.
  const bool copied = s.saved && s.savedAxis == 0;
  const ptrdiff_t first = copied ? s.begin[0] : 0, last = copied ? s.end[0] : s.size[0];
  const ptrdiff_t mirrored = s.border == image::eBorder::Mirror && !copied ? s.size[0] : 0;
  const ptrdiff_t end = x + n;
  const ptrdiff_t a = clamp(first - mirrored, x, end), b = clamp(first, x, end);
  const ptrdiff_t c = clamp(last, x, end), d = clamp(last + mirrored, x, end);
  if (a > x) loadSamples<T>(line, s, row, x, y, z, a - x);
  loadMirrored<T>(line + (a - x), row + (-1 - a) * size, b - a);
  for (ptrdiff_t i = b; i < c; ++i) line[i - x] = To(readSample<T>(row + i * size));
  loadMirrored<T>(line + (c - x), row + (2 * s.size[0] - 1 - c) * size, d - c);
  if (end > d) loadSamples<T>(line + (d - x), s, row, d, y, z, end - d);
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

inline FloatV withOneNan(FloatV v) {
  return v == v ? v : splat<FloatV>(__builtin_nanf(""));
}
inline void storeFloats(unsigned char* row, const float* line, ptrdiff_t i, ptrdiff_t end) {
  for (; i < end; ++i) {
    const float value = line[i] == line[i] ? line[i] : __builtin_nanf("");
    __builtin_memcpy(row + i * ptrdiff_t(sizeof value), &value, sizeof value);
  }
}

/// A processor::StoreLine for floats, as they are; but all NaN are one, because the sign of those that
/// arithmetic makes depends on the instructions that the compiler chose.
inline void storeFloatLine(const image::StripTarget& t, const float* line, ptrdiff_t x, ptrdiff_t y,
                           ptrdiff_t z, ptrdiff_t n) {
  unsigned char* row = image::targetRow(t, y, z) + (x - t.begin[0]) * ptrdiff_t(sizeof(float));
  ptrdiff_t i = 0;
  if (t.streamed && reinterpret_cast<size_t>(row) % sizeof(float) == 0) {
    constexpr size_t size = sizeof(FloatV);
    i = smaller(ptrdiff_t((size - reinterpret_cast<size_t>(row) % size) % size / sizeof(float)), n);
    storeFloats(row, line, 0, i);
    for (; i + lanesOf<FloatV> <= n; i += lanesOf<FloatV>)
      streamVector(reinterpret_cast<float*>(row) + i, withOneNan(loadVector<FloatV>(line + i)));
  }
  for (; i + lanesOf<FloatV> <= n; i += lanesOf<FloatV>) {
    const FloatV v = withOneNan(loadVector<FloatV>(line + i));
    __builtin_memcpy(row + i * ptrdiff_t(sizeof(float)), &v, sizeof v);
  }
  storeFloats(row, line, i, n);
}

/// The low bits of the 32-bit integers of a row, none taken for larger than `most`.
template <class To>
inline void truncateRow(const image::StripTarget& t, const image::StripSource& s, ptrdiff_t y, ptrdiff_t z,
                        unsigned most) {
  const unsigned char* from = image::sourceRow(s, y, z) + s.begin[0] * s.sampleSize;
  unsigned char* to = image::targetRow(t, y, z) + (s.begin[0] - t.begin[0]) * t.sampleSize;
  for (ptrdiff_t i = 0; i < s.end[0] - s.begin[0]; ++i) {
    const unsigned sample = readSample<unsigned>(from + i * ptrdiff_t(sizeof(unsigned)));
    const To value = To(sample < most ? sample : most);
    __builtin_memcpy(to + i * ptrdiff_t(sizeof value), &value, sizeof value);
  }
}

/// Copies a strip of 32-bit integers into integers, as the wrap rule has it: small ones are the low bits of a
/// signed integer, in which large values saturate. False for other types, whose values are floats without
/// loss.
inline bool copyIntegers(const processor::ProcessingInfo& info, const image::StripSource& s) {
  if (!info.integers || s.sampleSize != 4) return false;
  const image::StripTarget& t = info.targets[0];
  const unsigned most = info.unsignedInput && t.sampleSize < 4 ? 0x7fffffff : 0xffffffff;
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
    for (ptrdiff_t y = s.begin[1]; y < s.end[1]; ++y) {
      if (t.sampleSize == 1) truncateRow<unsigned char>(t, s, y, z, most);
      if (t.sampleSize == 2) truncateRow<unsigned short>(t, s, y, z, most);
      if (t.sampleSize == 4) truncateRow<unsigned>(t, s, y, z, most);
    }
  return true;
}

inline void clearLine(float* line, ptrdiff_t n) {
  __builtin_memset(line, 0, size_t(n) * sizeof(float));
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
