#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Bilateral3dImgLvl3> registrator;
const processor::KernelRegistrator kernels(Bilateral3dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<Bilateral3dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
