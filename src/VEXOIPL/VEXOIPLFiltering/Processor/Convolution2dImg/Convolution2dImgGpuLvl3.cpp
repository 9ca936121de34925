#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgGpuLvl3.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/ConvolutionOnGpu.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution2dImgGpuLvl3> registrator;

}  // namespace

BoolResult Convolution2dImgGpuLvl3::processOnGpu() {
  FlatKernel kernel;
  kernel.init(*getStorage<attr::InKnlXY>(), getStorage<attr::InNormalize>());
  return convolveOnGpu(*getStorage<attr::InSubGpuImg>(), *getStorage<attr::OutImg>(), kernel,
                       *getStorage<attr::InConvolBorder2d>());
}

}  // namespace vexo::imaproc::filter
