// Convolution of one strip of planes.

#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionKernel.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::imaproc::filter {
class Convolution2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::Convolution2dImgLvl3>::table() {
  static constexpr processor::KernelTable table =
      makeFloatLineTable<eConversion::Wrap>(convolve, convolutionScratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
