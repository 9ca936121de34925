#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo {
namespace portable {
extern const processor::KernelTable convolution3dImg;
}
namespace sse2 {
extern const processor::KernelTable convolution3dImg;
}
namespace avx {
extern const processor::KernelTable convolution3dImg;
}
namespace avx2 {
extern const processor::KernelTable convolution3dImg;
}
namespace avx512 {
extern const processor::KernelTable convolution3dImg;
}
}  // namespace vexo

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution3dImgLvl3> registrator;
const processor::KernelRegistrator kernels(Convolution3dImgLvl3::retrieveFunctionSelector(),
                                           {{{eIS_Standard}, portable::convolution3dImg},
                                            {{eIS_SSE2}, sse2::convolution3dImg},
                                            {{eIS_AVX}, avx::convolution3dImg},
                                            {{eIS_AVX2}, avx2::convolution3dImg},
                                            {{eIS_AVX512}, avx512::convolution3dImg}});

}  // namespace

BoolResult Convolution3dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlZStrip3d>().setBorder3dPolicy(getStorage<attr::InConvolBorder3d>());
  _kernel.init(*getStorage<attr::InKnlXYZ>(), getStorage<attr::InNormalize>());
  return true;
}

}  // namespace vexo::imaproc::filter
