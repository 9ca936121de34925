#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GenericMedian3dImgLvl3> registrator;
const processor::KernelRegistrator kernels(GenericMedian3dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<GenericMedian3dImgLvl3>());

}  // namespace

BoolResult GenericMedian3dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlZStrip3d>().setBorder3dPolicy(image::mirorBorder3d());
  return true;
}

}  // namespace vexo::imaproc::filter
