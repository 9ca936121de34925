// Passes of the separated bilateral filter of volumes, for one strip.

#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/BilateralWalk.h"

namespace vexo::imaproc::filter {
class SeparatedBilateralX3dImgLvl3;
class SeparatedBilateralY3dImgLvl3;
class SeparatedBilateralZ3dImgLvl3;
}  // namespace vexo::imaproc::filter

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::SeparatedBilateralX3dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeWalkTable<0>();
  return table;
}
template <>
const processor::KernelTable& Kernels<imaproc::filter::SeparatedBilateralY3dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeWalkTable<1>();
  return table;
}
template <>
const processor::KernelTable& Kernels<imaproc::filter::SeparatedBilateralZ3dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeWalkTable<2>();
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
