// Median by histograms, in constant time per pixel, for wide images, for one strip of planes.

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/ColumnHistograms.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class HistoO1MedianXStrip2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::HistoO1MedianXStrip2dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeSampleTable<ColumnMedian>(columnScratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
