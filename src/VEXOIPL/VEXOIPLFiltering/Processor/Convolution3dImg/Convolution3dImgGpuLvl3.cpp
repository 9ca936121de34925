#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgGpuLvl3.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/ConvolutionOnGpu.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution3dImgGpuLvl3> registrator;

}  // namespace

BoolResult Convolution3dImgGpuLvl3::processOnGpu() {
  FlatKernel kernel;
  kernel.init(*getStorage<attr::InKnlXYZ>(), getStorage<attr::InNormalize>());
  return convolveOnGpu(*getStorage<attr::InSubGpuImg>(), *getStorage<attr::OutImg>(), kernel,
                       *getStorage<attr::InConvolBorder3d>());
}

}  // namespace vexo::imaproc::filter
