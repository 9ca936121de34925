#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/Bilateral2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/Bilateral2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<Bilateral2dImgLvl1, Bilateral2dImgLvl2, Bilateral2dImgLvl3> registrator;

using Call = processor::CallForms<Bilateral2dImgLvl1, attr::OutImg, attr::InImg, attr::InSpaceSigma,
                                  attr::InRangeSigma>;
using CallWithHalf = processor::CallForms<Bilateral2dImgLvl1, attr::OutImg, attr::InImg,
                                          attr::InOptHalfKnlSize, attr::InSpaceSigma, attr::InRangeSigma>;

}  // namespace

BoolResult Bilateral2dImgLvl1::retrieveThirdProvider(const core::BasePriority& priority,
                                                     core::ProviderPtr& provider) {
  provider = dispatchBilateral<Bilateral2dImgLvl2, eSubImageSplitType::Plane2d>(priority, *this, _statistics,
                                                                                eBilateralWindow::Square);
  return true;
}

image::ImagePtr bilateral2dImg(const image::ConstImagePtr& inImg, double inSpaceSigma, double inRangeSigma) {
  return Call::run(inImg, inSpaceSigma, inRangeSigma);
}
image::ImagePtr bilateral2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                               double inSpaceSigma, double inRangeSigma) {
  return CallWithHalf::run(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}
void bilateral2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
                    double inRangeSigma, const image::ImagePtr& outImg) {
  CallWithHalf::fill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}
boost::shared_ptr<Bilateral2dImgLvl1> bilateral2dImg_async(const image::ConstImagePtr& inImg,
                                                           double inSpaceSigma, double inRangeSigma) {
  return Call::start(inImg, inSpaceSigma, inRangeSigma);
}
boost::shared_ptr<Bilateral2dImgLvl1> bilateral2dImg_async(const image::ConstImagePtr& inImg,
                                                           std::uint32_t inHalfKnlSize, double inSpaceSigma,
                                                           double inRangeSigma) {
  return CallWithHalf::start(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}
boost::shared_ptr<Bilateral2dImgLvl1> bilateral2dImg_async(const image::ConstImagePtr& inImg,
                                                           std::uint32_t inHalfKnlSize, double inSpaceSigma,
                                                           double inRangeSigma,
                                                           const image::ImagePtr& outImg) {
  return CallWithHalf::startFill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Bilateral2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
