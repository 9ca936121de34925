#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<K33Median2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(K33Median2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<K33Median2dImgLvl3>());

}  // namespace

BoolResult K33Median2dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlYStrip2d>().setBorder2dPolicy(image::mirorBorder2d());
  return true;
}

}  // namespace vexo::imaproc::filter
