#pragma once

// Sums of weighted lines: the innermost loops of the convolution kernels.

#include "VEXOProcessing/Kernel/Vector.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

constexpr int blockVectors = 8;  ///< of sums that stay in registers for all points
constexpr ptrdiff_t blockWidth = blockVectors * lanesOf<FloatV>;

/// Some points: where each finds the input of the first pixel, and its weight.
struct Taps {
  const float* const* lines;
  const float* weights;
  ptrdiff_t count;
};

/// Which points these are: the first, the last, or some between.
struct Stage {
  bool start;   ///< the sums start at 0
  bool divide;  ///< at the end
  float norm;
};

/// Adds the taps to the sums of `vectors` vectors, in registers.
template <int vectors>
inline void addTaps(const Taps& taps, const Stage& stage, float* sums, ptrdiff_t x) {
  constexpr int lanes = lanesOf<FloatV>;
  FloatV sum[vectors];
#pragma GCC unroll 8
  for (int i = 0; i < vectors; ++i)
    sum[i] = stage.start ? FloatV{} : loadVector<FloatV>(sums + x + i * lanes);
  for (ptrdiff_t t = 0; t < taps.count; ++t) {
    const FloatV weight = splat<FloatV>(taps.weights[t]);
    const float* line = taps.lines[t] + x;
#pragma GCC unroll 8
    for (int i = 0; i < vectors; ++i) sum[i] += weight * loadVector<FloatV>(line + i * lanes);
  }
  if (stage.divide) {
    const FloatV norm = splat<FloatV>(stage.norm);
#pragma GCC unroll 8
    for (int i = 0; i < vectors; ++i) sum[i] /= norm;
  }
#pragma GCC unroll 8
  for (int i = 0; i < vectors; ++i) storeVector(sums + x + i * lanes, sum[i]);
}

/// Columns [x, width) of a line of sums, in whole vectors.
inline void addTapsToLine(const Taps& taps, const Stage& stage, float* sums, ptrdiff_t x, ptrdiff_t width) {
  constexpr int lanes = lanesOf<FloatV>;
  for (; x + blockWidth <= width; x += blockWidth) addTaps<blockVectors>(taps, stage, sums, x);
  if (x + 4 * lanes <= width) {
    addTaps<4>(taps, stage, sums, x);
    x += 4 * lanes;
  }
  if (x + 2 * lanes <= width) {
    addTaps<2>(taps, stage, sums, x);
    x += 2 * lanes;
  }
  for (; x < width; x += lanes) addTaps<1>(taps, stage, sums, x);
}

/// Columns [x, end) of the sums of rows that share lines: what one reads with a tap, the row before it reads
/// `shift` taps later. Each line is loaded once. The taps of the rows follow one another. In whole groups of
/// vectors.
template <int rows>
inline void addSharedTaps(const Taps& taps, ptrdiff_t shift, const Stage& stage, float* sums, ptrdiff_t pitch,
                          ptrdiff_t x, ptrdiff_t end) {
  constexpr int lanes = lanesOf<FloatV>, vectors = 4;
  const ptrdiff_t later = (rows - 1) * shift;
  const float* const* lastRow = taps.lines + (rows - 1) * taps.count - later;
  for (; x < end; x += vectors * lanes) {
    FloatV sum[rows][vectors] = {};
    for (ptrdiff_t t = 0; t < taps.count + later; ++t) {
      const float* line = (t < taps.count ? taps.lines : lastRow)[t] + x;
      FloatV samples[vectors];
#pragma GCC unroll 4
      for (int i = 0; i < vectors; ++i) samples[i] = loadVector<FloatV>(line + i * lanes);
#pragma GCC unroll 4
      for (int r = 0; r < rows; ++r) {
        const ptrdiff_t tap = t - r * shift;
        if (tap < 0 || tap >= taps.count) continue;
        const FloatV weight = splat<FloatV>(taps.weights[tap]);
#pragma GCC unroll 4
        for (int i = 0; i < vectors; ++i) sum[r][i] += weight * samples[i];
      }
    }
#pragma GCC unroll 4
    for (int r = 0; r < rows; ++r)
#pragma GCC unroll 4
      for (int i = 0; i < vectors; ++i) {
        if (stage.divide) sum[r][i] /= splat<FloatV>(stage.norm);
        storeVector(sums + r * pitch + x + i * lanes, sum[r][i]);
      }
  }
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
