#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing2dMaskImgLvl3> registrator;
const processor::KernelRegistrator kernels(MeanSmoothing2dMaskImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<MeanSmoothing2dMaskImgLvl3>());

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
