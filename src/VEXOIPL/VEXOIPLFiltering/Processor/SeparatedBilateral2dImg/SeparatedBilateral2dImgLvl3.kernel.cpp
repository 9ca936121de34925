// Passes of the separated bilateral filter of planes, for one strip.

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralWalk.h"

namespace vexo::imaproc::filter {
class SeparatedBilateralX2dImgLvl3;
class SeparatedBilateralY2dImgLvl3;
}  // namespace vexo::imaproc::filter

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::SeparatedBilateralX2dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeWalkTable<0>();
  return table;
}
template <>
const processor::KernelTable& Kernels<imaproc::filter::SeparatedBilateralY2dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeWalkTable<1>();
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
