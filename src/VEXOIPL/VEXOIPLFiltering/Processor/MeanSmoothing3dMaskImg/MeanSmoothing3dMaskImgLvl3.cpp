#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo {
namespace portable {
extern const processor::KernelTable meanSmoothing3dMaskImg;
}
namespace sse2 {
extern const processor::KernelTable meanSmoothing3dMaskImg;
}
namespace avx2 {
extern const processor::KernelTable meanSmoothing3dMaskImg;
}
namespace avx512 {
extern const processor::KernelTable meanSmoothing3dMaskImg;
}
}  // namespace vexo

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing3dMaskImgLvl3> registrator;
const processor::KernelRegistrator kernels(MeanSmoothing3dMaskImgLvl3::retrieveFunctionSelector(),
                                           {{{eIS_Standard}, portable::meanSmoothing3dMaskImg},
                                            {{eIS_SSE2}, sse2::meanSmoothing3dMaskImg},
                                            {{eIS_AVX2}, avx2::meanSmoothing3dMaskImg},
                                            {{eIS_AVX512}, avx512::meanSmoothing3dMaskImg}});

}  // namespace

// The mask is always 8-bit.
void MeanSmoothing3dMaskImgLvl3::getDataTypeIdColl(processor::DataTypeIdentifierColl& types) const {
  types.add(
      boost::make_shared<ImageBufferTypeIdentifier>(getStorage<attr::InKnlZStrip3d>()->getBufferType()));
  types.add(boost::make_shared<ImageBufferTypeIdentifier>(getStorage<attr::OutZStrip3d>()->getBufferType()));
}

BoolResult MeanSmoothing3dMaskImgLvl3::preProcessStrip() {
  accessParser<attr::InKnlZStrip3d>().setBorder3dPolicy(image::mirorBorder3d());
  accessParser<attr::InBinKnlZStrip3d>().setBorder3dPolicy(image::mirorBorder3d());
  return true;
}

}  // namespace vexo::imaproc::filter
