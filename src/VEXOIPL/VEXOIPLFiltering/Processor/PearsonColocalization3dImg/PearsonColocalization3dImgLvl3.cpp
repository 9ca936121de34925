#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<PearsonColocalization3dImgLvl3> registrator;
const processor::KernelRegistrator kernels(PearsonColocalization3dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<PearsonColocalization3dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
