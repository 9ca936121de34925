#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<DespeckleFilter2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(DespeckleFilter2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<DespeckleFilter2dImgLvl3>());

}  // namespace

BoolResult DespeckleFilter2dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlYStrip2d>().setBorder2dPolicy(image::mirorBorder2d());
  _factor = getStorage<attr::InFactor>();
  return true;
}

}  // namespace vexo::imaproc::filter
