#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<Bilateral3dImgLvl1, Bilateral3dImgLvl2, Bilateral3dImgLvl3> registrator;

using Call = processor::CallForms<Bilateral3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InSpaceSigma,
                                  attr::InRangeSigma>;
using CallWithHalf = processor::CallForms<Bilateral3dImgLvl1, attr::OutImg, attr::InImg3d,
                                          attr::InOptHalfKnlSize, attr::InSpaceSigma, attr::InRangeSigma>;

}  // namespace

BoolResult Bilateral3dImgLvl1::retrieveThirdProvider(const core::BasePriority& priority,
                                                     core::ProviderPtr& provider) {
  provider = dispatchBilateral<Bilateral3dImgLvl2, eSubImageSplitType::Volume3d>(priority, *this, _statistics,
                                                                                 eBilateralWindow::Cube);
  return true;
}

image::ImagePtr bilateral3dImg(const image::ConstImagePtr& inImg, double inSpaceSigma, double inRangeSigma) {
  return Call::run(inImg, inSpaceSigma, inRangeSigma);
}
image::ImagePtr bilateral3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                               double inSpaceSigma, double inRangeSigma) {
  return CallWithHalf::run(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}
void bilateral3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
                    double inRangeSigma, const image::ImagePtr& outImg) {
  CallWithHalf::fill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}
boost::shared_ptr<Bilateral3dImgLvl1> bilateral3dImg_async(const image::ConstImagePtr& inImg,
                                                           double inSpaceSigma, double inRangeSigma) {
  return Call::start(inImg, inSpaceSigma, inRangeSigma);
}
boost::shared_ptr<Bilateral3dImgLvl1> bilateral3dImg_async(const image::ConstImagePtr& inImg,
                                                           std::uint32_t inHalfKnlSize, double inSpaceSigma,
                                                           double inRangeSigma) {
  return CallWithHalf::start(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}
boost::shared_ptr<Bilateral3dImgLvl1> bilateral3dImg_async(const image::ConstImagePtr& inImg,
                                                           std::uint32_t inHalfKnlSize, double inSpaceSigma,
                                                           double inRangeSigma,
                                                           const image::ImagePtr& outImg) {
  return CallWithHalf::startFill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Bilateral3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
