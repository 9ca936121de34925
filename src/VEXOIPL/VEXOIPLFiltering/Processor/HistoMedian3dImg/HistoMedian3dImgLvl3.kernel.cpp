// Median of a box by one histogram that is swept along the rows, for one strip: the kernel of planes.

#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class HistoMedian3dImgLvl3;
class HistoOkMedian2dImgLvl3;
}  // namespace vexo::imaproc::filter

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::HistoMedian3dImgLvl3>::table() {
  return Kernels<imaproc::filter::HistoOkMedian2dImgLvl3>::table();
}

}  // namespace vexo::VEXO_KERNEL_SET
