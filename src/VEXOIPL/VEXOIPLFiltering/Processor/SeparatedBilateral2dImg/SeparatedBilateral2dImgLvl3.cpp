#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateral2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<SeparatedBilateralX2dImgLvl3> registratorX;
const processor::KernelRegistrator kernelsX(SeparatedBilateralX2dImgLvl3::retrieveFunctionSelector(),
                                            processor::kernelObjects<SeparatedBilateralX2dImgLvl3>());
const processor::ProcessorRegistrator<SeparatedBilateralY2dImgLvl3> registratorY;
const processor::KernelRegistrator kernelsY(SeparatedBilateralY2dImgLvl3::retrieveFunctionSelector(),
                                            processor::kernelObjects<SeparatedBilateralY2dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
