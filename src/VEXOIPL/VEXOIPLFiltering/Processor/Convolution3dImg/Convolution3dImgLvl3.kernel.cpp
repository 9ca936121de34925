// Convolution of one strip of volumes.

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/ConvolutionKernel.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::VEXO_KERNEL_SET {

extern const processor::KernelTable convolution3dImg;
constexpr processor::KernelTable convolution3dImg =
    makeFloatLineTable<eConversion::Wrap>(convolve, convolutionScratchSize);

}  // namespace vexo::VEXO_KERNEL_SET
