// Masked mean over a window, for one strip of rows.

#include "VEXOIPL/VEXOIPLFiltering/MeanSmoothing/MaskedSums.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::imaproc::filter {
class MeanSmoothing2dMaskImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

using processor::ProcessingInfo;

ptrdiff_t lineBytes(const image::StripSource& s) {
  return roundUp((s.end[0] - s.begin[0]) * ptrdiff_t(sizeof(float)), cacheLine);
}

size_t scratchSize(const ProcessingInfo& info) {
  return size_t(lineBytes(info.sources[0]) + MaskedSums::scratchBytes(info.sources[0]));
}

struct MeanSink {
  const ProcessingInfo& info;
  float* means;
  void take(const float* sums, const unsigned* counts, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z,
            ptrdiff_t n) const {
    divideByCounts(means, sums, counts, n);
    info.storers[0](info.targets[0], means, x, y, z, n);
  }
};

const char* meanSmoothingMask(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  MaskedSums sums(info, s, info.scratch + lineBytes(s));
  if (s.marginBefore[0] + s.marginAfter[0] + s.marginBefore[1] + s.marginAfter[1] == 0) {
    sums.convert();
    return nullptr;
  }
  MeanSink sink{info, reinterpret_cast<float*>(info.scratch)};
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z) sums.run(sink, z);
  return nullptr;
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::filter::MeanSmoothing2dMaskImgLvl3>::table() {
  static constexpr processor::KernelTable table =
      makeFloatLineTable<eConversion::Wrap>(meanSmoothingMask, scratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
