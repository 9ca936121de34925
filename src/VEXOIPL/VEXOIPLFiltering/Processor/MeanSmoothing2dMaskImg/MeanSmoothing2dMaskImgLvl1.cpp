#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl2.h"
#include "VEXOIPL/VEXOIPLLogical/MaskRule.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing2dMaskImgLvl1> registrator;

}  // namespace

processor::RulePtr MeanSmoothing2dMaskImgLvl1::createRule() const {
  return logic::matchMask(accessAttribute<attr::InImg>(), accessAttribute<attr::InMaskImg>()) &&
         matchSize(accessAttribute<attr::InImg>(), accessAttribute<attr::OutImg>());
}

BoolResult MeanSmoothing2dMaskImgLvl1::retrieveProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = MeanSmoothing2dMaskImgLvl2;
  provider = processor::dispatchPieces<Next>(
      priority, planeSplit<Next, attr::InSubImg2d>(getStorage<attr::InImg>()),
      planeSplit<Next, attr::InSubMaskImg2d>(getStorage<attr::InMaskImg>()),
      planeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeX>(getStorage<attr::InHalfKnlSizeX>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeY>(getStorage<attr::InHalfKnlSizeY>()));
  return true;
}

namespace {

using Call = processor::CallForms<MeanSmoothing2dMaskImgLvl1, attr::OutImg, attr::InImg, attr::InMaskImg,
                                  attr::InHalfKnlSizeX, attr::InHalfKnlSizeY>;

}  // namespace

boost::shared_ptr<image::BaseImage> meanSmoothing2dMaskImg(
    const boost::shared_ptr<const image::BaseImage>& inImg,
    const boost::shared_ptr<const image::BaseImage>& inMaskImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY) {
  return Call::run(inImg, inMaskImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

void meanSmoothing2dMaskImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                            const boost::shared_ptr<const image::BaseImage>& inMaskImg,
                            std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                            const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inMaskImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<MeanSmoothing2dMaskImgLvl1> meanSmoothing2dMaskImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg,
    const boost::shared_ptr<const image::BaseImage>& inMaskImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY) {
  return Call::start(inImg, inMaskImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

boost::shared_ptr<MeanSmoothing2dMaskImgLvl1> meanSmoothing2dMaskImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg,
    const boost::shared_ptr<const image::BaseImage>& inMaskImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inMaskImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<MeanSmoothing2dMaskImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
