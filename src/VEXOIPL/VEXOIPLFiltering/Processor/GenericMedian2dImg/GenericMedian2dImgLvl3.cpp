#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GenericMedian2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(GenericMedian2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<GenericMedian2dImgLvl3>());

}  // namespace

BoolResult GenericMedian2dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlYStrip2d>().setBorder2dPolicy(image::mirorBorder2d());
  return true;
}

}  // namespace vexo::imaproc::filter
