#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<PearsonColocalization2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(PearsonColocalization2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<PearsonColocalization2dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
