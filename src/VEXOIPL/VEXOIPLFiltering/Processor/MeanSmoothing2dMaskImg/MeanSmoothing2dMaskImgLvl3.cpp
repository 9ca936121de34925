#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo {
namespace portable {
extern const processor::KernelTable meanSmoothing2dMaskImg;
}
namespace sse2 {
extern const processor::KernelTable meanSmoothing2dMaskImg;
}
namespace avx2 {
extern const processor::KernelTable meanSmoothing2dMaskImg;
}
namespace avx512 {
extern const processor::KernelTable meanSmoothing2dMaskImg;
}
}  // namespace vexo

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing2dMaskImgLvl3> registrator;
const processor::KernelRegistrator kernels(MeanSmoothing2dMaskImgLvl3::retrieveFunctionSelector(),
                                           {{{eIS_Standard}, portable::meanSmoothing2dMaskImg},
                                            {{eIS_SSE2}, sse2::meanSmoothing2dMaskImg},
                                            {{eIS_AVX2}, avx2::meanSmoothing2dMaskImg},
                                            {{eIS_AVX512}, avx512::meanSmoothing2dMaskImg}});

}  // namespace

// The mask is always 8-bit.
void MeanSmoothing2dMaskImgLvl3::getDataTypeIdColl(processor::DataTypeIdentifierColl& types) const {
  types.add(
      boost::make_shared<ImageBufferTypeIdentifier>(getStorage<attr::InKnlYStrip2d>()->getBufferType()));
  types.add(boost::make_shared<ImageBufferTypeIdentifier>(getStorage<attr::OutYStrip2d>()->getBufferType()));
}

BoolResult MeanSmoothing2dMaskImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlYStrip2d>().setBorder2dPolicy(image::mirorBorder2d());
  accessParser<attr::InBinKnlYStrip2d>().setBorder2dPolicy(image::mirorBorder2d());
  return true;
}

}  // namespace vexo::imaproc::filter
