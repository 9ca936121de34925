// Median by one histogram that is swept along the rows, for one strip of planes.

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/SweptHistogram.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class HistoOkMedian2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::HistoOkMedian2dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeSampleTable<SweptMedian>(sweepScratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
