#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianSmoothing2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLevels.h"
#include "VEXOMath/Gaussian.h"
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

// The kernel builder refuses the same values, but only when the output exists already.
processor::RulePtr GaussianSmoothing2dImgLvl1::createRule() const {
  return matchSize(accessAttribute<attr::InImg>(), accessAttribute<attr::OutImg>()) &&
         processor::makeRule([this] {
           const auto coverage = getStorage<attr::InOptSmoothingGaussianCoverage>();
           return checkGaussianSmoothing(
               {{"InStdDevX", getStorage<attr::InStdDevX>()}, {"InStdDevY", getStorage<attr::InStdDevY>()}},
               coverage->coverage.getValue(), coverage->maxHalfKnlSize.getValue());
         });
}

BoolResult GaussianSmoothing2dImgLvl1::preProcess() {
  const auto coverage = getStorage<attr::InOptSmoothingGaussianCoverage>();
  _kernelX = boost::make_shared<KernelXY>();
  _kernelY = boost::make_shared<KernelXY>();
  separableGaussianSmoothing(getStorage<attr::InStdDevX>(), getStorage<attr::InStdDevY>(),
                             coverage->coverage.getValue(), coverage->maxHalfKnlSize.getValue(), *_kernelX,
                             *_kernelY);
  return true;
}

BoolResult GaussianSmoothing2dImgLvl1::retrieveFirstProvider(const core::BasePriority& priority,
                                                             core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::InImg>(), _kernelY);
  return true;
}

BoolResult GaussianSmoothing2dImgLvl1::retrieveSecondProvider(const core::BasePriority& priority,
                                                              core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::OutImg>(), _kernelX);
  return true;
}

void GaussianSmoothing2dImgLvl1::clearIntermediateData() {
  _kernelX.reset();
  _kernelY.reset();
}

core::ProviderPtr GaussianSmoothing2dImgLvl1::makePass(
    const core::BasePriority& priority, const image::ConstImagePtr& from,
    const boost::shared_ptr<const KernelXY>& kernel) const {
  return dispatchPlanes<Convolution2dImgLvl2>(
      priority, *this, LevelImages({from}, {getStorage<attr::OutImg>()}), with<attr::InKnlXY>(kernel),
      with<attr::InNormalize>(true), with<attr::InConvolBorder2d>(image::mirorBorder2d()));
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
