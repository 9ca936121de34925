// Convolution of one strip of planes.

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/ConvolutionKernel.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::VEXO_KERNEL_SET {

extern const processor::KernelTable convolution2dImg;
constexpr processor::KernelTable convolution2dImg =
    makeFloatLineTable<eConversion::Wrap>(convolve, convolutionScratchSize);

}  // namespace vexo::VEXO_KERNEL_SET
