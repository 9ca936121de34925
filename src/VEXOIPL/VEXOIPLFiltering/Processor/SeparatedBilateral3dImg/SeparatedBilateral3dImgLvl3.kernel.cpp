// Passes of the separated bilateral filter of volumes, for one strip: those of planes, and one more.

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralWalk.h"

namespace vexo::imaproc::filter {
class SeparatedBilateralX2dImgLvl3;
class SeparatedBilateralY2dImgLvl3;
class SeparatedBilateralX3dImgLvl3;
class SeparatedBilateralY3dImgLvl3;
class SeparatedBilateralZ3dImgLvl3;
}  // namespace vexo::imaproc::filter

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::SeparatedBilateralX3dImgLvl3>::table() {
  return Kernels<imaproc::filter::SeparatedBilateralX2dImgLvl3>::table();
}
template <>
const processor::KernelTable& Kernels<imaproc::filter::SeparatedBilateralY3dImgLvl3>::table() {
  return Kernels<imaproc::filter::SeparatedBilateralY2dImgLvl3>::table();
}
template <>
const processor::KernelTable& Kernels<imaproc::filter::SeparatedBilateralZ3dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeWalkTable<2>();
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
