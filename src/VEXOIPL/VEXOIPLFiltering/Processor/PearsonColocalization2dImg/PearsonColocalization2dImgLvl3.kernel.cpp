// Pearson colocalization map, for one strip of planes.

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonMap.h"

namespace vexo::imaproc::filter {
class PearsonColocalization2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::PearsonColocalization2dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makePearsonTable();
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
