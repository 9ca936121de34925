// Pearson colocalization map, for one strip of volumes.

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonMap.h"

namespace vexo::imaproc::filter {
class PearsonColocalization3dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::PearsonColocalization3dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makePearsonTable();
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
