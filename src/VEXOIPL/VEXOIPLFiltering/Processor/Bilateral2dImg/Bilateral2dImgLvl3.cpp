#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/Bilateral2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Bilateral2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(Bilateral2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<Bilateral2dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
