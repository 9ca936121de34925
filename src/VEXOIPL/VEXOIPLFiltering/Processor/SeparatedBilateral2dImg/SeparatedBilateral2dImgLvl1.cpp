#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateral2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateral2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<SeparatedBilateral2dImgLvl1, SeparatedBilateral2dImgLvl2,
                        SeparatedBilateralX2dImgLvl3, SeparatedBilateralY2dImgLvl3>
    registrator;

using Call = processor::CallForms<SeparatedBilateral2dImgLvl1, attr::OutImg, attr::InImg, attr::InSpaceSigma,
                                  attr::InRangeSigma>;
using CallWithHalf = processor::CallForms<SeparatedBilateral2dImgLvl1, attr::OutImg, attr::InImg,
                                          attr::InOptHalfKnlSize, attr::InSpaceSigma, attr::InRangeSigma>;

}  // namespace

BoolResult SeparatedBilateral2dImgLvl1::retrieveThirdProvider(const core::BasePriority& priority,
                                                              core::ProviderPtr& provider) {
  provider = dispatchBilateral<SeparatedBilateral2dImgLvl2, eSubImageSplitType::Plane2d>(
      priority, *this, _statistics, eBilateralWindow::Walk);
  return true;
}

image::ImagePtr separatedBilateral2dImg(const image::ConstImagePtr& inImg, double inSpaceSigma,
                                        double inRangeSigma) {
  return Call::run(inImg, inSpaceSigma, inRangeSigma);
}
image::ImagePtr separatedBilateral2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                                        double inSpaceSigma, double inRangeSigma) {
  return CallWithHalf::run(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}
void separatedBilateral2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                             double inSpaceSigma, double inRangeSigma, const image::ImagePtr& outImg) {
  CallWithHalf::fill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}
boost::shared_ptr<SeparatedBilateral2dImgLvl1> separatedBilateral2dImg_async(
    const image::ConstImagePtr& inImg, double inSpaceSigma, double inRangeSigma) {
  return Call::start(inImg, inSpaceSigma, inRangeSigma);
}
boost::shared_ptr<SeparatedBilateral2dImgLvl1> separatedBilateral2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
    double inRangeSigma) {
  return CallWithHalf::start(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}
boost::shared_ptr<SeparatedBilateral2dImgLvl1> separatedBilateral2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma, double inRangeSigma,
    const image::ImagePtr& outImg) {
  return CallWithHalf::startFill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<SeparatedBilateral2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
