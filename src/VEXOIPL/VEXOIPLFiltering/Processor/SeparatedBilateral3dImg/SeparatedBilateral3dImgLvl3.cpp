#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<SeparatedBilateralX3dImgLvl3> registratorX;
const processor::KernelRegistrator kernelsX(SeparatedBilateralX3dImgLvl3::retrieveFunctionSelector(),
                                            processor::kernelObjects<SeparatedBilateralX3dImgLvl3>());
const processor::ProcessorRegistrator<SeparatedBilateralY3dImgLvl3> registratorY;
const processor::KernelRegistrator kernelsY(SeparatedBilateralY3dImgLvl3::retrieveFunctionSelector(),
                                            processor::kernelObjects<SeparatedBilateralY3dImgLvl3>());
const processor::ProcessorRegistrator<SeparatedBilateralZ3dImgLvl3> registratorZ;
const processor::KernelRegistrator kernelsZ(SeparatedBilateralZ3dImgLvl3::retrieveFunctionSelector(),
                                            processor::kernelObjects<SeparatedBilateralZ3dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
