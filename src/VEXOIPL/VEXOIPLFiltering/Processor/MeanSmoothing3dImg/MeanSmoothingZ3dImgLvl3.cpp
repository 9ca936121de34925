#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothingZ3dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo {
namespace portable {
extern const processor::KernelTable meanSmoothingZ3dImg;
}
namespace sse2 {
extern const processor::KernelTable meanSmoothingZ3dImg;
}
namespace avx {
extern const processor::KernelTable meanSmoothingZ3dImg;
}
namespace avx2 {
extern const processor::KernelTable meanSmoothingZ3dImg;
}
namespace avx512 {
extern const processor::KernelTable meanSmoothingZ3dImg;
}
}  // namespace vexo

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothingZ3dImgLvl3> registrator;
const processor::KernelRegistrator kernels(MeanSmoothingZ3dImgLvl3::retrieveFunctionSelector(),
                                           {{{eIS_Standard}, portable::meanSmoothingZ3dImg},
                                            {{eIS_SSE2}, sse2::meanSmoothingZ3dImg},
                                            {{eIS_AVX}, avx::meanSmoothingZ3dImg},
                                            {{eIS_AVX2}, avx2::meanSmoothingZ3dImg},
                                            {{eIS_AVX512}, avx512::meanSmoothingZ3dImg}});

}  // namespace

BoolResult MeanSmoothingZ3dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlZStrip3d>().setBorder3dPolicy(image::mirorBorder3d());
  return true;
}

}  // namespace vexo::imaproc::filter
