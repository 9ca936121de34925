#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralTables.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<SeparatedBilateral3dImgLvl1> registrator;

using Call = processor::CallForms<SeparatedBilateral3dImgLvl1, attr::OutImg, attr::InImg3d,
                                  attr::InSpaceSigma, attr::InRangeSigma>;
using CallWithHalf = processor::CallForms<SeparatedBilateral3dImgLvl1, attr::OutImg, attr::InImg3d,
                                          attr::InOptHalfKnlSize, attr::InSpaceSigma, attr::InRangeSigma>;

}  // namespace

BoolResult SeparatedBilateral3dImgLvl1::retrieveThirdProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  const auto input = getStorage<attr::InImg3d>();
  const BilateralTables tables =
      makeBilateralTables(*this, input->getBufferType(), _statistics, eBilateralWindow::Walk);
  provider = dispatchBilateral<SeparatedBilateral3dImgLvl2, attr::InSubImg3d>(
      priority, *this, input, eSubImageSplitType::Volume3d, tables);
  return true;
}

boost::shared_ptr<image::BaseImage> separatedBilateral3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, double inSpaceSigma, double inRangeSigma) {
  return Call::run(inImg, inSpaceSigma, inRangeSigma);
}

boost::shared_ptr<image::BaseImage> separatedBilateral3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
    double inRangeSigma) {
  return CallWithHalf::run(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}

void separatedBilateral3dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                             std::uint32_t inHalfKnlSize, double inSpaceSigma, double inRangeSigma,
                             const boost::shared_ptr<image::BaseImage>& outImg) {
  CallWithHalf::fill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}

boost::shared_ptr<SeparatedBilateral3dImgLvl1> separatedBilateral3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, double inSpaceSigma, double inRangeSigma) {
  return Call::start(inImg, inSpaceSigma, inRangeSigma);
}

boost::shared_ptr<SeparatedBilateral3dImgLvl1> separatedBilateral3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
    double inRangeSigma) {
  return CallWithHalf::start(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma);
}

boost::shared_ptr<SeparatedBilateral3dImgLvl1> separatedBilateral3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
    double inRangeSigma, const boost::shared_ptr<image::BaseImage>& outImg) {
  return CallWithHalf::startFill(inImg, inHalfKnlSize, inSpaceSigma, inRangeSigma, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<SeparatedBilateral3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
