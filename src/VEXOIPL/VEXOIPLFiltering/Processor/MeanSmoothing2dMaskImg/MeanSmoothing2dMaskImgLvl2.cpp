#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/CopyIfWritten.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl3.h"
#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl3.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing2dMaskImgLvl2> registrator;

constexpr auto view = image::eStripAllocationType::View;

}  // namespace

BoolResult MeanSmoothing2dMaskImgLvl2::preProcess() {
  const auto output = getStorage<attr::OutImg>();
  _input = copyIfWritten(getStorage<attr::InSubImg2d>(), output);
  _mask = copyIfWritten(getStorage<attr::InSubMaskImg2d>(), output);
  return true;
}

void MeanSmoothing2dMaskImgLvl2::clearIntermediateData() {
  _input.reset();
  _mask.reset();
}

BoolResult MeanSmoothing2dMaskImgLvl2::retrieveFirstProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = MeanSmoothing2dMaskImgLvl3;
  const image::StripMargins margins =
      centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>());
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageYStrip2dWithKernelSplit<Next, const image::BaseImage, attr::InKnlYStrip2d>>(
          _input, view, margins),
      boost::make_shared<ImageYStrip2dWithKernelSplit<Next, const image::BaseImage, attr::InBinKnlYStrip2d>>(
          _mask, view, margins),
      boost::make_shared<ImageYStrip2dSplit<Next, image::BaseImage, attr::OutYStrip2d>>(
          getStorage<attr::OutImg>(), view));
  return true;
}

// In place on the means: it needs no samples but those it replaces.
BoolResult MeanSmoothing2dMaskImgLvl2::retrieveSecondProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = logic::MaskImgImgLvl3;
  const auto output = getStorage<attr::OutImg>();
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageYStrip2dSplit<Next, const image::BaseImage, attr::InYStrip2d1>>(output, view),
      boost::make_shared<ImageYStrip2dSplit<Next, const image::BaseImage, attr::InYStrip2d2>>(_input, view),
      boost::make_shared<ImageYStrip2dSplit<Next, const image::BaseImage, attr::InMaskYStrip2d>>(_mask, view),
      boost::make_shared<ImageYStrip2dSplit<Next, image::BaseImage, attr::OutYStrip2d>>(output, view));
  return true;
}

}  // namespace vexo::imaproc::filter
