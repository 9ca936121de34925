#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(Convolution2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<Convolution2dImgLvl3>());

}  // namespace

BoolResult Convolution2dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlYStrip2d>().setBorder2dPolicy(getStorage<attr::InConvolBorder2d>());
  _kernel.init(*getStorage<attr::InKnlXY>(), getStorage<attr::InNormalize>());
  return true;
}

}  // namespace vexo::imaproc::filter
