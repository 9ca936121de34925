#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing3dMaskImgLvl3> registrator;
const processor::KernelRegistrator kernels(MeanSmoothing3dMaskImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<MeanSmoothing3dMaskImgLvl3>());

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
