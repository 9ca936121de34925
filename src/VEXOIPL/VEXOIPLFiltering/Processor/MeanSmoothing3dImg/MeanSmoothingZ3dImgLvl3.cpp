#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothingZ3dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothingZ3dImgLvl3> registrator;
const processor::KernelRegistrator kernels(MeanSmoothingZ3dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<MeanSmoothingZ3dImgLvl3>());

}  // namespace

BoolResult MeanSmoothingZ3dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlZStrip3d>().setBorder3dPolicy(image::mirorBorder3d());
  return true;
}

}  // namespace vexo::imaproc::filter
