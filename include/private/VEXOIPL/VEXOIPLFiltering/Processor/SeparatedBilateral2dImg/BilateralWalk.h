#pragma once

// One pass of the separated bilateral filter: from each pixel walks both ways along an axis; on each the
// weight of a difference is the least one met so far. The samples at one distance are a line, whatever the
// axis, so that many pixels of a row walk at once.

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/RangeWeights.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

constexpr ptrdiff_t chunk = 256;  ///< pixels that walk at once

/// Lines of floats in scratch memory, pointers to those of a walk from end to end, and a line of results.
struct WalkLayout {
  ptrdiff_t half, width, lineCount, lineLength, pitch;
  size_t lines, results, end;  ///< bytes

  WalkLayout(const image::StripSource& s, int axis)
      : half(s.marginBefore[axis]),
        width(s.end[0] - s.begin[0]),
        lineCount(axis == 0 ? 1 : 2 * half + 1),
        lineLength(axis == 0 ? width + 2 * half : width),
        pitch(roundUp(width, chunk) + (axis == 0 ? roundUp(2 * half, 16) : 0)),  // whole chunks are read
        lines(size_t(roundUp((2 * half + 1) * ptrdiff_t(sizeof(void*)), 64))),
        results(lines + size_t(lineCount) * size_t(pitch) * sizeof(float)),
        end(results + size_t(roundUp(width, chunk)) * sizeof(float)) {}
};

/// The results of up to `chunk` pixels, and of those that fill up a vector, whose samples at distance d are
/// at samples[d].
inline void walkChunk(float* results, const float* const* samples, ptrdiff_t half, ptrdiff_t n,
                      const BilateralParameters& p) {
  n = roundUp(n, lanesOf<FloatV>);
  float weightSums[chunk], sums[chunk], running[chunk], weights[chunk];
  int bins[chunk];
  const FloatV scale = splat<FloatV>(p.scale), lastBin = splat<FloatV>(float(p.lastBin)),
               one = splat<FloatV>(1);
  const float* centres = samples[0];
  for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>) {
    storeVector(weightSums + i, one);
    storeVector(sums + i, loadVector<FloatV>(centres + i));
  }
  for (int side = 1; side >= -1; side -= 2) {
    for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>) storeVector(running + i, one);
    for (ptrdiff_t d = 1; d <= half; ++d) {
      const float* line = samples[side * d];
      const FloatV factor = splat<FloatV>(p.space[d]);
      for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>) {
        const IntV found =
            binsOf(loadVector<FloatV>(line + i), loadVector<FloatV>(centres + i), scale, lastBin);
        __builtin_memcpy(bins + i, &found, sizeof found);
      }
      lookUp(weights, bins, p.range, n);
      for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>) {
        const FloatV range = lower(loadVector<FloatV>(running + i), loadVector<FloatV>(weights + i));
        const FloatV weight = factor * range;
        storeVector(running + i, range);
        storeVector(weightSums + i, loadVector<FloatV>(weightSums + i) + weight);
        storeVector(sums + i, loadVector<FloatV>(sums + i) + weight * loadVector<FloatV>(line + i));
      }
    }
  }
  for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>)
    storeVector(results + i, loadVector<FloatV>(sums + i) / loadVector<FloatV>(weightSums + i));
}

#if defined(__AVX512F__)
/// The same with a table in registers, and the sums as well.
inline void walkChunk(float* results, const float* const* samples, ptrdiff_t half, ptrdiff_t n,
                      const BilateralParameters& p, const RegisterTable& bins) {
  const RegisterTable table = bins;
  const FloatV scale = splat<FloatV>(p.scale), lastBin = splat<FloatV>(float(p.lastBin)),
               one = splat<FloatV>(1);
  constexpr ptrdiff_t lanes = lanesOf<FloatV>;
  for (ptrdiff_t i = 0; i < n; i += table.atOnce) {
    const FloatV centre0 = loadVector<FloatV>(samples[0] + i),
                 centre1 = loadVector<FloatV>(samples[0] + i + lanes);
    FloatV weightSum0 = one, weightSum1 = one, sum0 = centre0, sum1 = centre1;
    for (int side = 1; side >= -1; side -= 2) {
      FloatV running0 = one, running1 = one;
      for (ptrdiff_t d = 1; d <= half; ++d) {
        const FloatV factor = splat<FloatV>(p.space[d]);
        const FloatV sample0 = loadVector<FloatV>(samples[side * d] + i);
        const FloatV sample1 = loadVector<FloatV>(samples[side * d] + i + lanes);
        FloatV weight0, weight1;
        table.get(binsOf(sample0, centre0, scale, lastBin), binsOf(sample1, centre1, scale, lastBin), weight0,
                  weight1);
        running0 = lower(running0, weight0);
        running1 = lower(running1, weight1);
        weight0 = factor * running0;
        weight1 = factor * running1;
        weightSum0 += weight0;
        weightSum1 += weight1;
        sum0 += weight0 * sample0;
        sum1 += weight1 * sample1;
      }
    }
    storeVector(results + i, sum0 / weightSum0);
    storeVector(results + i + lanes, sum1 / weightSum1);
  }
}
#endif

/// A strip: `inner` is the axis that the rows of the strip follow one another along, and `outer` the other
/// one.
template <int axis, class Chunk>
inline void walkStrip(const processor::ProcessingInfo& info, Chunk walk) {
  constexpr int inner = axis == 2 ? 2 : 1, outer = 3 - inner;
  const image::StripSource& s = info.sources[0];
  const WalkLayout l(s, axis);
  const float** samples = reinterpret_cast<const float**>(info.scratch);
  float* const lines = reinterpret_cast<float*>(info.scratch + l.lines);
  float* const results = reinterpret_cast<float*>(info.scratch + l.results);
  __builtin_memset(lines, 0, l.results - l.lines);  // what is read beyond the samples
  const ptrdiff_t reach = axis == 0 ? 0 : l.half;
  const auto lineOf = [&](ptrdiff_t i) {
    return lines + (i - s.begin[inner] + reach) % l.lineCount * l.pitch;
  };
  for (ptrdiff_t o = s.begin[outer]; o < s.end[outer]; ++o) {
    const auto load = [&](ptrdiff_t i) {
      info.loaders[0](lineOf(i), s, s.begin[0] - s.marginBefore[0], inner == 1 ? i : o, inner == 1 ? o : i,
                      l.lineLength);
    };
    for (ptrdiff_t i = -reach; i < reach; ++i) load(s.begin[inner] + i);
    for (ptrdiff_t i = s.begin[inner]; i < s.end[inner]; ++i) {
      load(i + reach);
      for (ptrdiff_t d = -l.half; d <= l.half; ++d)
        samples[l.half + d] = axis == 0 ? lineOf(i) + l.half + d : lineOf(i + d);
      for (ptrdiff_t x = 0; x < l.width; x += chunk) {
        walk(results + x, samples + l.half, l.half, smaller(chunk, l.width - x));
        for (ptrdiff_t d = 0; d <= 2 * l.half; ++d) samples[d] += chunk;
      }
      info.storers[0](info.targets[0], results, s.begin[0], inner == 1 ? i : o, inner == 1 ? o : i, l.width);
    }
  }
}

template <int axis>
const char* walk(const processor::ProcessingInfo& info) {
  const BilateralParameters& p = *static_cast<const BilateralParameters*>(info.parameters);
#if defined(__AVX512F__)
  if (p.lastBin < registerBins) {
    const RegisterTable table(p);
    walkStrip<axis>(info, [&](float* results, const float* const* samples, ptrdiff_t half, ptrdiff_t n) {
      walkChunk(results, samples, half, n, p, table);
    });
    return nullptr;
  }
#endif
  walkStrip<axis>(info, [&](float* results, const float* const* samples, ptrdiff_t half, ptrdiff_t n) {
    walkChunk(results, samples, half, n, p);
  });
  return nullptr;
}

template <int axis>
size_t walkScratchSize(const processor::ProcessingInfo& info) {
  return WalkLayout(info.sources[0], axis).end;
}

template <int axis>
constexpr processor::KernelTable makeWalkTable() {
  return makeFloatLineTable<eConversion::Saturate>(walk<axis>, walkScratchSize<axis>);
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
