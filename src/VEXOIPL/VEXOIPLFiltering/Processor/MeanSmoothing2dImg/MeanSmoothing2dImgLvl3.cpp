#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(MeanSmoothing2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<MeanSmoothing2dImgLvl3>());

}  // namespace

// Called for each strip, before its lines are parsed.
BoolResult MeanSmoothing2dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlYStrip2d>().setBorder2dPolicy(image::mirorBorder2d());
  return true;
}

}  // namespace vexo::imaproc::filter
