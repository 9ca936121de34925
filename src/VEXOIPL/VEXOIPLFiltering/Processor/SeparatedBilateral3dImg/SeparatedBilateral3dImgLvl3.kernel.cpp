// The pass along Z of the separated bilateral filter of volumes, for one strip; the others are those of
// planes.

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralWalk.h"

namespace vexo::imaproc::filter {
class SeparatedBilateralZ3dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::SeparatedBilateralZ3dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeWalkTable<2>();
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
