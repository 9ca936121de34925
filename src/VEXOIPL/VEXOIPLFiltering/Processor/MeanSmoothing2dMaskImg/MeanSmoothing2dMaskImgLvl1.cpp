#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLevels.h"
#include "VEXOIPL/VEXOIPLLogical/MaskRule.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<MeanSmoothing2dMaskImgLvl1, MeanSmoothing2dMaskImgLvl2, MeanSmoothing2dMaskImgLvl3>
    registrator;

using Call = processor::CallForms<MeanSmoothing2dMaskImgLvl1, attr::OutImg, attr::InImg, attr::InMaskImg,
                                  attr::InHalfKnlSizeX, attr::InHalfKnlSizeY>;

}  // namespace

processor::RulePtr MeanSmoothing2dMaskImgLvl1::createRule() const {
  return logic::matchMask(accessAttribute<attr::InImg>(), accessAttribute<attr::InMaskImg>()) &&
         matchSize(accessAttribute<attr::InImg>(), accessAttribute<attr::OutImg>());
}

BoolResult MeanSmoothing2dMaskImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                        core::ProviderPtr& provider) {
  provider = dispatchPlanes<MeanSmoothing2dMaskImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr meanSmoothing2dMaskImg(const image::ConstImagePtr& inImg,
                                       const image::ConstImagePtr& inMaskImg, std::uint32_t inHalfKnlSizeX,
                                       std::uint32_t inHalfKnlSizeY) {
  return Call::run(inImg, inMaskImg, inHalfKnlSizeX, inHalfKnlSizeY);
}
void meanSmoothing2dMaskImg(const image::ConstImagePtr& inImg, const image::ConstImagePtr& inMaskImg,
                            std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                            const image::ImagePtr& outImg) {
  Call::fill(inImg, inMaskImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}
boost::shared_ptr<MeanSmoothing2dMaskImgLvl1> meanSmoothing2dMaskImg_async(
    const image::ConstImagePtr& inImg, const image::ConstImagePtr& inMaskImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY) {
  return Call::start(inImg, inMaskImg, inHalfKnlSizeX, inHalfKnlSizeY);
}
boost::shared_ptr<MeanSmoothing2dMaskImgLvl1> meanSmoothing2dMaskImg_async(
    const image::ConstImagePtr& inImg, const image::ConstImagePtr& inMaskImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const image::ImagePtr& outImg) {
  return Call::startFill(inImg, inMaskImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<MeanSmoothing2dMaskImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
