#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing3dImg/GaussianSmoothing3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLevels.h"
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

core::ProviderPtr GaussianSmoothing3dImgLvl1::makePass(const core::BasePriority& priority,
                                                       const image::ConstImagePtr& from,
                                                       std::size_t axis) const {
  return dispatchVolumes<Convolution3dImgLvl2>(
      priority, *this, LevelImages({from}, {getStorage<attr::OutImg>()}),
      with<attr::InKnlXYZ>(_kernels[axis]), with<attr::InNormalize>(true),
      with<attr::InConvolBorder3d>(image::mirorBorder3d()));
}

BoolResult GaussianSmoothing3dImgLvl1::retrieveFirstProvider(const core::BasePriority& priority,
                                                             core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::InImg3d>(), 0);
  return true;
}

BoolResult GaussianSmoothing3dImgLvl1::retrieveSecondProvider(const core::BasePriority& priority,
                                                              core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::OutImg>(), 1);
  return true;
}

BoolResult GaussianSmoothing3dImgLvl1::retrieveThirdProvider(const core::BasePriority& priority,
                                                             core::ProviderPtr& provider) {
  provider = makePass(priority, getStorage<attr::OutImg>(), 2);
  return true;
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
