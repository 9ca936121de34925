// Convolution of volumes, for one strip: the kernel of planes, whose points may lie in other slices.

#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class Convolution2dImgLvl3;
class Convolution3dImgLvl3;
}  // namespace vexo::imaproc::filter

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::Convolution3dImgLvl3>::table() {
  return Kernels<imaproc::filter::Convolution2dImgLvl3>::table();
}

}  // namespace vexo::VEXO_KERNEL_SET
