// Bilateral filter of volumes, for one strip: the kernel of planes.

#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class Bilateral2dImgLvl3;
class Bilateral3dImgLvl3;
}  // namespace vexo::imaproc::filter

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::Bilateral3dImgLvl3>::table() {
  return Kernels<imaproc::filter::Bilateral2dImgLvl3>::table();
}

}  // namespace vexo::VEXO_KERNEL_SET
