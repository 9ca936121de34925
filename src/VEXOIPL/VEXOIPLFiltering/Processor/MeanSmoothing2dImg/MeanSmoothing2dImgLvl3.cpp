#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

// The kernel source is compiled once per instruction set; each object exports its table in a namespace of its
// own.
namespace vexo {
namespace portable {
extern const processor::KernelTable meanSmoothing2dImg;
}
namespace sse2 {
extern const processor::KernelTable meanSmoothing2dImg;
}
namespace avx {
extern const processor::KernelTable meanSmoothing2dImg;
}
namespace avx2 {
extern const processor::KernelTable meanSmoothing2dImg;
}
namespace avx512 {
extern const processor::KernelTable meanSmoothing2dImg;
}
}  // namespace vexo

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(MeanSmoothing2dImgLvl3::retrieveFunctionSelector(),
                                           {{{eIS_Standard}, portable::meanSmoothing2dImg},
                                            {{eIS_SSE2}, sse2::meanSmoothing2dImg},
                                            {{eIS_AVX}, avx::meanSmoothing2dImg},
                                            {{eIS_AVX2}, avx2::meanSmoothing2dImg},
                                            {{eIS_AVX512}, avx512::meanSmoothing2dImg}});

}  // namespace

// Called for each strip, before its lines are parsed.
BoolResult MeanSmoothing2dImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlYStrip2d>().setBorder2dPolicy(image::mirorBorder2d());
  return true;
}

}  // namespace vexo::imaproc::filter
