#pragma once

// Bilateral filter: the mean of a window, weighted by the distance in space and in value from its centre.
// Sums run over the window row by row, for many pixels of a row at once.

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/RangeWeights.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/WindowLines.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

constexpr ptrdiff_t chunk = 256;  ///< pixels that are summed at once

/// Lines of floats in scratch memory, pointers to them in the order of the window, and a line of results.
struct BilateralLayout : WindowLines {
  ptrdiff_t pitch;
  size_t lines, results, end;  ///< bytes

  explicit BilateralLayout(const image::StripSource& s)
      : WindowLines(s),
        pitch(roundUp(width, chunk) + roundUp(knlX, 16)),  // whole chunks are read
        lines(size_t(roundUp(lineCount * ptrdiff_t(sizeof(void*)), 64))),
        results(lines + size_t(lineCount) * size_t(pitch) * sizeof(float)),
        end(results + size_t(roundUp(width, chunk)) * sizeof(float)) {}
};

/// The results of up to `chunk` pixels, and of those that fill up a vector; lines[i] + knlX / 2 of the middle
/// line are the centres.
inline void filterChunk(float* results, const float* const* lines, ptrdiff_t n, const BilateralLayout& l,
                        const BilateralParameters& p) {
  float weightSums[chunk] = {}, sums[chunk] = {}, weights[chunk];
  int bins[chunk];
  n = roundUp(n, lanesOf<FloatV>);
  const float* centres = lines[l.lineCount / 2] + l.knlX / 2;
  const FloatV scale = splat<FloatV>(p.scale), lastBin = splat<FloatV>(float(p.lastBin));
  const float* space = p.space;
  for (ptrdiff_t r = 0; r < l.lineCount; ++r)
    for (ptrdiff_t c = 0; c < l.knlX; ++c) {
      const float* samples = lines[r] + c;
      const FloatV factor = splat<FloatV>(*space++);
      for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>) {
        const IntV found =
            binsOf(loadVector<FloatV>(samples + i), loadVector<FloatV>(centres + i), scale, lastBin);
        __builtin_memcpy(bins + i, &found, sizeof found);
      }
      lookUp(weights, bins, p.range, n);
      for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>) {
        const FloatV weight = loadVector<FloatV>(weights + i) * factor;
        storeVector(weightSums + i, loadVector<FloatV>(weightSums + i) + weight);
        storeVector(sums + i, loadVector<FloatV>(sums + i) + weight * loadVector<FloatV>(samples + i));
      }
    }
  for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>)
    storeVector(results + i, loadVector<FloatV>(sums + i) / loadVector<FloatV>(weightSums + i));
}

#if defined(__AVX512F__)
/// The same with a table in registers, and the sums as well.
inline void filterChunk(float* results, const float* const* lines, ptrdiff_t n, const BilateralLayout& l,
                        const BilateralParameters& p, const RegisterTable& bins) {
  const RegisterTable table = bins;
  const float* centres = lines[l.lineCount / 2] + l.knlX / 2;
  const FloatV scale = splat<FloatV>(p.scale), lastBin = splat<FloatV>(float(p.lastBin));
  constexpr ptrdiff_t lanes = lanesOf<FloatV>;
  for (ptrdiff_t i = 0; i < n; i += table.atOnce) {
    const FloatV centre0 = loadVector<FloatV>(centres + i), centre1 = loadVector<FloatV>(centres + i + lanes);
    FloatV weightSum0 = {}, weightSum1 = {}, sum0 = {}, sum1 = {};
    const float* space = p.space;
    for (ptrdiff_t r = 0; r < l.lineCount; ++r)
      for (ptrdiff_t c = 0; c < l.knlX; ++c) {
        const FloatV factor = splat<FloatV>(*space++);
        const FloatV sample0 = loadVector<FloatV>(lines[r] + c + i);
        const FloatV sample1 = loadVector<FloatV>(lines[r] + c + i + lanes);
        FloatV weight0, weight1;
        table.get(binsOf(sample0, centre0, scale, lastBin), binsOf(sample1, centre1, scale, lastBin), weight0,
                  weight1);
        weight0 *= factor;
        weight1 *= factor;
        weightSum0 += weight0;
        weightSum1 += weight1;
        sum0 += weight0 * sample0;
        sum1 += weight1 * sample1;
      }
    storeVector(results + i, sum0 / weightSum0);
    storeVector(results + i + lanes, sum1 / weightSum1);
  }
}
#endif

template <class Chunk>
inline void filterWindows(const processor::ProcessingInfo& info, Chunk filter) {
  const BilateralLayout l(info.sources[0]);
  const float** ordered = reinterpret_cast<const float**>(info.scratch);
  float* const lines = reinterpret_cast<float*>(info.scratch + l.lines);
  float* const results = reinterpret_cast<float*>(info.scratch + l.results);
  __builtin_memset(lines, 0, l.results - l.lines);  // what is read beyond the samples
  l.run([&](ptrdiff_t line, ptrdiff_t x, ptrdiff_t y,
            ptrdiff_t z) { info.loaders[0](lines + line * l.pitch, l.source, x, y, z, l.lineLength); },
        [&](ptrdiff_t y, ptrdiff_t z) {
          for (ptrdiff_t i = 0; i < l.lineCount; ++i)
            ordered[i] = lines + l.lineOf(y - l.source.marginBefore[1] + i % l.knlY, i / l.knlY) * l.pitch;
          for (ptrdiff_t x = 0; x < l.width; x += chunk) {
            filter(results + x, ordered, smaller(chunk, l.width - x), l);
            for (ptrdiff_t i = 0; i < l.lineCount; ++i) ordered[i] += chunk;
          }
          info.storers[0](info.targets[0], results, l.source.begin[0], y, z, l.width);
        });
}

inline const char* filterBilaterally(const processor::ProcessingInfo& info) {
  const BilateralParameters& p = *static_cast<const BilateralParameters*>(info.parameters);
#if defined(__AVX512F__)
  if (p.lastBin < registerBins) {
    const RegisterTable table(p);
    filterWindows(info, [&](float* results, const float* const* lines, ptrdiff_t n,
                            const BilateralLayout& l) { filterChunk(results, lines, n, l, p, table); });
    return nullptr;
  }
#endif
  filterWindows(info, [&](float* results, const float* const* lines, ptrdiff_t n, const BilateralLayout& l) {
    filterChunk(results, lines, n, l, p);
  });
  return nullptr;
}

inline size_t bilateralScratchSize(const processor::ProcessingInfo& info) {
  return BilateralLayout(info.sources[0]).end;
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
