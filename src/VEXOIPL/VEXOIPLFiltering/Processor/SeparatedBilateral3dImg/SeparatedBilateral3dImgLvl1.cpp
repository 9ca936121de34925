#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<SeparatedBilateral3dImgLvl1, SeparatedBilateral3dImgLvl2,
                        SeparatedBilateralX3dImgLvl3, SeparatedBilateralY3dImgLvl3,
                        SeparatedBilateralZ3dImgLvl3>
    registrator;

using Call = processor::CallForms<SeparatedBilateral3dImgLvl1, attr::OutImg, attr::InImg3d,
                                  attr::InSpaceSigma, attr::InRangeSigma>;
using CallWithHalf = processor::CallForms<SeparatedBilateral3dImgLvl1, attr::OutImg, attr::InImg3d,
                                          attr::InOptHalfKnlSize, attr::InSpaceSigma, attr::InRangeSigma>;

}  // namespace

BoolResult SeparatedBilateral3dImgLvl1::retrieveThirdProvider(const core::BasePriority& priority,
                                                              core::ProviderPtr& provider) {
  provider = dispatchBilateral<SeparatedBilateral3dImgLvl2, eSubImageSplitType::Volume3d>(
      priority, *this, _statistics, eBilateralWindow::Walk);
  return true;
}

image::ImagePtr separatedBilateral3dImg(const image::ConstImagePtr& inImg, double inSpaceSigma,
                                        double inRangeSigma) {
  return Call::run(inImg, inSpaceSigma, inRangeSigma);
}
image::ImagePtr separatedBilateral3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                                        double inSpaceSigma, double inRangeSigma) {
  return CallWithHalf::run(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}
void separatedBilateral3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                             double inSpaceSigma, double inRangeSigma, const image::ImagePtr& outImg) {
  CallWithHalf::fill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}
boost::shared_ptr<SeparatedBilateral3dImgLvl1> separatedBilateral3dImg_async(
    const image::ConstImagePtr& inImg, double inSpaceSigma, double inRangeSigma) {
  return Call::start(inImg, inSpaceSigma, inRangeSigma);
}
boost::shared_ptr<SeparatedBilateral3dImgLvl1> separatedBilateral3dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
    double inRangeSigma) {
  return CallWithHalf::start(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}
boost::shared_ptr<SeparatedBilateral3dImgLvl1> separatedBilateral3dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma, double inRangeSigma,
    const image::ImagePtr& outImg) {
  return CallWithHalf::startFill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<SeparatedBilateral3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
