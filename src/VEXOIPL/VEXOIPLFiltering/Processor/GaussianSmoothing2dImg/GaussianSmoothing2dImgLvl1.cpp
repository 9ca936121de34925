#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianSmoothing2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<GaussianSmoothing2dImgLvl1> registrator;

using Call = processor::CallForms<GaussianSmoothing2dImgLvl1, attr::OutImg, attr::InImg, attr::InStdDevX,
                                  attr::InStdDevY>;
using CallWithCoverage =
    processor::CallForms<GaussianSmoothing2dImgLvl1, attr::OutImg, attr::InImg, attr::InStdDevX,
                         attr::InStdDevY, attr::InOptSmoothingGaussianCoverage>;

}  // namespace

core::ProviderPtr GaussianSmoothing2dImgLvl1::makePass(const core::BasePriority& priority,
                                                       const image::ConstImagePtr& from,
                                                       std::size_t axis) const {
  return dispatchPlanes<Convolution2dImgLvl2>(
      priority, *this, LevelImages({from}, {getStorage<attr::OutImg>()}), with<attr::InKnlXY>(_kernels[axis]),
      with<attr::InNormalize>(true), with<attr::InConvolBorder2d>(image::mirorBorder2d()));
}

BoolResult GaussianSmoothing2dImgLvl1::retrieveFirstProvider(const core::BasePriority& priority,
                                                             core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::InImg>(), 1);
  return true;
}

BoolResult GaussianSmoothing2dImgLvl1::retrieveSecondProvider(const core::BasePriority& priority,
                                                              core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::OutImg>(), 0);
  return true;
}

image::ImagePtr gaussianSmoothing2dImg(const image::ConstImagePtr& inImg, float stdDev) {
  return Call::run(inImg, stdDev, stdDev);
}
image::ImagePtr gaussianSmoothing2dImg(const image::ConstImagePtr& inImg, float stdDevX, float stdDevY,
                                       const boost::shared_ptr<const attr::GaussianCoverage>& coverage) {
  return CallWithCoverage::run(inImg, stdDevX, stdDevY, coverage);
}
void gaussianSmoothing2dImg(const image::ConstImagePtr& inImg, float stdDevX, float stdDevY,
                            const boost::shared_ptr<const attr::GaussianCoverage>& coverage,
                            const image::ImagePtr& outImg) {
  CallWithCoverage::fill(inImg, stdDevX, stdDevY, coverage, outImg);
}
boost::shared_ptr<GaussianSmoothing2dImgLvl1> gaussianSmoothing2dImg_async(const image::ConstImagePtr& inImg,
                                                                           float stdDev) {
  return Call::start(inImg, stdDev, stdDev);
}
boost::shared_ptr<GaussianSmoothing2dImgLvl1> gaussianSmoothing2dImg_async(
    const image::ConstImagePtr& inImg, float stdDevX, float stdDevY,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage) {
  return CallWithCoverage::start(inImg, stdDevX, stdDevY, coverage);
}
boost::shared_ptr<GaussianSmoothing2dImgLvl1> gaussianSmoothing2dImg_async(
    const image::ConstImagePtr& inImg, float stdDevX, float stdDevY,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage, const image::ImagePtr& outImg) {
  return CallWithCoverage::startFill(inImg, stdDevX, stdDevY, coverage, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<GaussianSmoothing2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
