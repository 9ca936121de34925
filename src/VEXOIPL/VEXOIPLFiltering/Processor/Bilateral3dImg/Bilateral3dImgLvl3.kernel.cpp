// Bilateral filter of volumes, for one strip.

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralWindow.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::imaproc::filter {
class Bilateral3dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::Bilateral3dImgLvl3>::table() {
  static constexpr processor::KernelTable table =
      makeFloatLineTable<eConversion::Saturate>(filterBilaterally, bilateralScratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
