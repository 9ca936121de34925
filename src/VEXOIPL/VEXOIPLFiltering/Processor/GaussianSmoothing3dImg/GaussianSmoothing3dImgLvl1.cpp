#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing3dImg/GaussianSmoothing3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLevels.h"
#include "VEXOMath/Gaussian.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<GaussianSmoothing3dImgLvl1> registrator;

using Call = processor::CallForms<GaussianSmoothing3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InStdDevX,
                                  attr::InStdDevY, attr::InStdDevZ>;
using CallWithCoverage =
    processor::CallForms<GaussianSmoothing3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InStdDevX,
                         attr::InStdDevY, attr::InStdDevZ, attr::InOptSmoothingGaussianCoverage>;

}  // namespace

// The kernel builder refuses the same values, but only when the output exists already.
processor::RulePtr GaussianSmoothing3dImgLvl1::createRule() const {
  return matchSize(accessAttribute<attr::InImg3d>(), accessAttribute<attr::OutImg>()) &&
         processor::makeRule([this] {
           const auto coverage = getStorage<attr::InOptSmoothingGaussianCoverage>();
           return checkGaussianSmoothing({{"InStdDevX", getStorage<attr::InStdDevX>()},
                                          {"InStdDevY", getStorage<attr::InStdDevY>()},
                                          {"InStdDevZ", getStorage<attr::InStdDevZ>()}},
                                         coverage->coverage.getValue(), coverage->maxHalfKnlSize.getValue());
         });
}

BoolResult GaussianSmoothing3dImgLvl1::preProcess() {
  const auto coverage = getStorage<attr::InOptSmoothingGaussianCoverage>();
  _kernelX = boost::make_shared<KernelXYZ>();
  _kernelY = boost::make_shared<KernelXYZ>();
  _kernelZ = boost::make_shared<KernelXYZ>();
  separableGaussianSmoothing(getStorage<attr::InStdDevX>(), getStorage<attr::InStdDevY>(),
                             getStorage<attr::InStdDevZ>(), coverage->coverage.getValue(),
                             coverage->maxHalfKnlSize.getValue(), *_kernelX, *_kernelY, *_kernelZ);
  return true;
}

BoolResult GaussianSmoothing3dImgLvl1::retrieveFirstProvider(const core::BasePriority& priority,
                                                             core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::InImg3d>(), _kernelX);
  return true;
}

BoolResult GaussianSmoothing3dImgLvl1::retrieveSecondProvider(const core::BasePriority& priority,
                                                              core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::OutImg>(), _kernelY);
  return true;
}

BoolResult GaussianSmoothing3dImgLvl1::retrieveThirdProvider(const core::BasePriority& priority,
                                                             core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::OutImg>(), _kernelZ);
  return true;
}

void GaussianSmoothing3dImgLvl1::clearIntermediateData() {
  _kernelX.reset();
  _kernelY.reset();
  _kernelZ.reset();
}

core::ProviderPtr GaussianSmoothing3dImgLvl1::makePass(
    const core::BasePriority& priority, const image::ConstImagePtr& from,
    const boost::shared_ptr<const KernelXYZ>& kernel) const {
  return dispatchVolumes<Convolution3dImgLvl2>(
      priority, *this, LevelImages({from}, {getStorage<attr::OutImg>()}), with<attr::InKnlXYZ>(kernel),
      with<attr::InNormalize>(true), with<attr::InConvolBorder3d>(image::mirorBorder3d()));
}

image::ImagePtr gaussianSmoothing3dImg(const image::ConstImagePtr& inImg3d, float stdDev) {
  return Call::run(inImg3d, stdDev, stdDev, stdDev);
}
image::ImagePtr gaussianSmoothing3dImg(const image::ConstImagePtr& inImg3d, float stdDevX, float stdDevY,
                                       float stdDevZ,
                                       const boost::shared_ptr<const attr::GaussianCoverage>& coverage) {
  return CallWithCoverage::run(inImg3d, stdDevX, stdDevY, stdDevZ, coverage);
}
void gaussianSmoothing3dImg(const image::ConstImagePtr& inImg3d, float stdDevX, float stdDevY, float stdDevZ,
                            const boost::shared_ptr<const attr::GaussianCoverage>& coverage,
                            const image::ImagePtr& outImg) {
  CallWithCoverage::fill(inImg3d, stdDevX, stdDevY, stdDevZ, coverage, outImg);
}
boost::shared_ptr<GaussianSmoothing3dImgLvl1> gaussianSmoothing3dImg_async(
    const image::ConstImagePtr& inImg3d, float stdDev) {
  return Call::start(inImg3d, stdDev, stdDev, stdDev);
}
boost::shared_ptr<GaussianSmoothing3dImgLvl1> gaussianSmoothing3dImg_async(
    const image::ConstImagePtr& inImg3d, float stdDevX, float stdDevY, float stdDevZ,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage) {
  return CallWithCoverage::start(inImg3d, stdDevX, stdDevY, stdDevZ, coverage);
}
boost::shared_ptr<GaussianSmoothing3dImgLvl1> gaussianSmoothing3dImg_async(
    const image::ConstImagePtr& inImg3d, float stdDevX, float stdDevY, float stdDevZ,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage, const image::ImagePtr& outImg) {
  return CallWithCoverage::startFill(inImg3d, stdDevX, stdDevY, stdDevZ, coverage, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<GaussianSmoothing3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
