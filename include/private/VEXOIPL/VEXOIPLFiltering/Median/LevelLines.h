#pragma once

// Lines of levels, one byte each, from and to rows of samples; for the medians that count in histograms.

#include "VEXOIPL/VEXOIPLFiltering/Median/LevelMap.h"
#include "VEXOProcessing/Kernel/Samples.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

using imaproc::filter::LevelMap;

/// Levels of n samples. Whatever a sample is, NaN included, its level is one of 0 to 255; that of NaN is 0.
template <class T>
void mapToLevels(unsigned char* levels, const T* samples, ptrdiff_t n, const LevelMap& map) {
  if constexpr (!isSame<T, float>)
    if (map.exact) {
      const T first = T(map.first);
      const unsigned offset = map.offset, room = 255 - map.offset;
      for (ptrdiff_t i = 0; i < n; ++i) {
        const unsigned above = samples[i] > first ? unsigned(samples[i]) - unsigned(first) : 0u;
        levels[i] = (unsigned char)(above < room ? above + offset : 255u);
      }
      return;
    }
  for (ptrdiff_t i = 0; i < n; ++i) {
    const double level = (double(samples[i]) - map.minimum) * map.scale;
    levels[i] = (unsigned char)(level > 0.0 ? level < 255.0 ? int(level) : 255 : 0);
  }
}

/// Reads n samples of the row (y, z) from column x on, as levels; every position may lie in the margins.
/// `line` has room for n samples.
using LoadLevels = void (*)(unsigned char* levels, unsigned char* line, const LevelMap& map,
                            const image::StripSource& source, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z,
                            ptrdiff_t n);
template <class T>
void loadLevels(unsigned char* levels, unsigned char* line, const LevelMap& map, const image::StripSource& s,
                ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
  T* samples = reinterpret_cast<T*>(line);
  loadLine<T>(samples, s, x, y, z, n);
  mapToLevels(levels, samples, n, map);
}

/// Stores the samples of the levels of a whole row of the strip.
using StoreLevels = void (*)(const image::StripTarget& target, const unsigned char* levels,
                             const LevelMap& map, ptrdiff_t y, ptrdiff_t z);
template <size_t size>
void storeLevels(const image::StripTarget& t, const unsigned char* levels, const LevelMap& map, ptrdiff_t y,
                 ptrdiff_t z) {
  unsigned char* row = image::targetRow(t, y, z);
  for (ptrdiff_t i = 0; i < t.end[0] - t.begin[0]; ++i)
    __builtin_memcpy(row + i * ptrdiff_t(size), map.samples + levels[i] * size, size);
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
