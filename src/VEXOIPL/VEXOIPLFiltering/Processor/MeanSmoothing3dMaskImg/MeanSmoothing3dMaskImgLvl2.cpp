#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/CopyIfWritten.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl3.h"
#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl3.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing3dMaskImgLvl2> registrator;

constexpr auto view = image::eStripAllocationType::View;

}  // namespace

BoolResult MeanSmoothing3dMaskImgLvl2::preProcess() {
  const auto output = getStorage<attr::OutImg>();
  _input = copyIfWritten(getStorage<attr::InSubImg3d>(), output);
  _mask = copyIfWritten(getStorage<attr::InSubBinImg3d>(), output);
  return true;
}

void MeanSmoothing3dMaskImgLvl2::clearIntermediateData() {
  _input.reset();
  _mask.reset();
}

BoolResult MeanSmoothing3dMaskImgLvl2::retrieveFirstProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = MeanSmoothing3dMaskImgLvl3;
  const image::StripMargins margins =
      centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>(),
                     getStorage<attr::InHalfKnlSizeZ>());
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageZStrip3dWithKernelSplit<Next, const image::BaseImage, attr::InKnlZStrip3d>>(
          _input, view, margins),
      boost::make_shared<ImageZStrip3dWithKernelSplit<Next, const image::BaseImage, attr::InBinKnlZStrip3d>>(
          _mask, view, margins),
      boost::make_shared<ImageZStrip3dSplit<Next, image::BaseImage, attr::OutZStrip3d>>(
          getStorage<attr::OutImg>(), view));
  return true;
}

// In place on the means: it needs no samples but those it replaces.
BoolResult MeanSmoothing3dMaskImgLvl2::retrieveSecondProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = logic::MaskImgImg3dLvl3;
  const auto output = getStorage<attr::OutImg>();
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageZStrip3dSplit<Next, const image::BaseImage, attr::InZStrip3d1>>(output, view),
      boost::make_shared<ImageZStrip3dSplit<Next, const image::BaseImage, attr::InZStrip3d2>>(_input, view),
      boost::make_shared<ImageZStrip3dSplit<Next, const image::BaseImage, attr::InMaskZStrip3d>>(_mask, view),
      boost::make_shared<ImageZStrip3dSplit<Next, image::BaseImage, attr::OutZStrip3d>>(output, view));
  return true;
}

}  // namespace vexo::imaproc::filter
