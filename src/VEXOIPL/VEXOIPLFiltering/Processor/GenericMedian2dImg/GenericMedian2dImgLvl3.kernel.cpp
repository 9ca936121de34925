// Median of a rectangular window, for one strip of planes.

#include "VEXOIPL/VEXOIPLFiltering/Median/BitSearch.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class GenericMedian2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

template <class TIn, class TOut>
struct GenericMedian2d {
  static const char* run(const processor::ProcessingInfo& info) {
    return searchMedians<TIn>(info, storeSamples<TIn, TOut>);
  }
};

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::filter::GenericMedian2dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeSampleTable<GenericMedian2d>(searchScratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
