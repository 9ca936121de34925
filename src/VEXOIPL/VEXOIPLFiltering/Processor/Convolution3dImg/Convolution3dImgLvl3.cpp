#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution3dImgLvl3> registrator;
const processor::KernelRegistrator kernels(Convolution3dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<Convolution3dImgLvl3>());

}  // namespace

BoolResult Convolution3dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlZStrip3d>().setBorder3dPolicy(getStorage<attr::InConvolBorder3d>());
  _kernel.init(*getStorage<attr::InKnlXYZ>(), getStorage<attr::InNormalize>());
  return true;
}

}  // namespace vexo::imaproc::filter
