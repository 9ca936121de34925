#pragma once

// Pearson colocalization map of two images, for one strip of any cut.

#include "VEXOIPL/VEXOIPLFiltering/Pearson/PearsonParameters.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

constexpr ptrdiff_t pieceOfRow = 1024;  ///< samples whose lines stay in the first-level cache

inline const char* mapPearson(const processor::ProcessingInfo& info) {
  const auto& p = *static_cast<const imaproc::filter::PearsonParameters*>(info.parameters);
  const image::StripSource& s = info.sources[0];
  float* const first = reinterpret_cast<float*>(info.scratch);
  float* const second = first + pieceOfRow;
  const FloatV mean1 = splat<FloatV>(p.mean1), mean2 = splat<FloatV>(p.mean2),
               factor = splat<FloatV>(p.factor);
  clearLine(first, 2 * pieceOfRow);  // what vectors read beyond the samples
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
    for (ptrdiff_t y = s.begin[1]; y < s.end[1] && !image::isStopped(s); ++y)
      for (ptrdiff_t x = s.begin[0]; x < s.end[0]; x += pieceOfRow) {
        const ptrdiff_t n = smaller(pieceOfRow, s.end[0] - x);
        info.loaders[0](first, info.sources[0], x, y, z, n);
        info.loaders[1](second, info.sources[1], x, y, z, n);
        for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>)
          storeVector(first + i, (loadVector<FloatV>(first + i) - mean1) *
                                     (loadVector<FloatV>(second + i) - mean2) / factor);
        info.storers[0](info.targets[0], first, x, y, z, n);
      }
  return nullptr;
}

inline size_t pearsonScratchSize(const processor::ProcessingInfo&) {
  return 2 * pieceOfRow * sizeof(float);
}

/// The functions are found by the types of the two inputs; the output is 32-bit float.
constexpr processor::KernelTable makePearsonTable() {
  return makeFloatLineTable<eConversion::Saturate>(mapPearson, pearsonScratchSize);
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
