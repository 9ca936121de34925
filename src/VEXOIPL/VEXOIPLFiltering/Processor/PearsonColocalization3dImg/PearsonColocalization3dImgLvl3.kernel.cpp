// Pearson colocalization map of volumes, for one strip: the kernel of planes.

#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class PearsonColocalization2dImgLvl3;
class PearsonColocalization3dImgLvl3;
}  // namespace vexo::imaproc::filter

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::PearsonColocalization3dImgLvl3>::table() {
  return Kernels<imaproc::filter::PearsonColocalization2dImgLvl3>::table();
}

}  // namespace vexo::VEXO_KERNEL_SET
