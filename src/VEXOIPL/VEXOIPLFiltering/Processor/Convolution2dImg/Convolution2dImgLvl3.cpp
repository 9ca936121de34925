#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo {
namespace portable {
extern const processor::KernelTable convolution2dImg;
}
namespace sse2 {
extern const processor::KernelTable convolution2dImg;
}
namespace avx {
extern const processor::KernelTable convolution2dImg;
}
namespace avx2 {
extern const processor::KernelTable convolution2dImg;
}
namespace avx512 {
extern const processor::KernelTable convolution2dImg;
}
}  // namespace vexo

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(Convolution2dImgLvl3::retrieveFunctionSelector(),
                                           {{{eIS_Standard}, portable::convolution2dImg},
                                            {{eIS_SSE2}, sse2::convolution2dImg},
                                            {{eIS_AVX}, avx::convolution2dImg},
                                            {{eIS_AVX2}, avx2::convolution2dImg},
                                            {{eIS_AVX512}, avx512::convolution2dImg}});

}  // namespace

BoolResult Convolution2dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlYStrip2d>().setBorder2dPolicy(getStorage<attr::InConvolBorder2d>());
  _kernel.init(*getStorage<attr::InKnlXY>(), getStorage<attr::InNormalize>());
  return true;
}

}  // namespace vexo::imaproc::filter
