// Bilateral filter of planes, for one strip.

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralWindow.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::imaproc::filter {
class Bilateral2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::Bilateral2dImgLvl3>::table() {
  static constexpr processor::KernelTable table =
      makeFloatLineTable<eConversion::Saturate>(filterBilaterally, bilateralScratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
