#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing3dImg/GaussianSmoothing3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl2.h"
#include "VEXOMath/Gaussian.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GaussianSmoothing3dImgLvl1> registrator;

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
  _border = image::mirorBorder3d();
  return true;
}

BoolResult GaussianSmoothing3dImgLvl1::retrieveFirstProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = makePass(priority, getStorage<attr::InImg3d>(), _kernelX);
  return true;
}

BoolResult GaussianSmoothing3dImgLvl1::retrieveSecondProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = makePass(priority, getStorage<attr::OutImg>(), _kernelY);
  return true;
}

BoolResult GaussianSmoothing3dImgLvl1::retrieveThirdProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = makePass(priority, getStorage<attr::OutImg>(), _kernelZ);
  return true;
}

void GaussianSmoothing3dImgLvl1::clearIntermediateData() {
  _kernelX.reset();
  _kernelY.reset();
  _kernelZ.reset();
  _border.reset();
}

boost::shared_ptr<core::BaseActionProvider> GaussianSmoothing3dImgLvl1::makePass(
    const core::BasePriority& priority, const boost::shared_ptr<const image::BaseImage>& from,
    const boost::shared_ptr<const KernelXYZ>& kernel) const {
  using Next = Convolution3dImgLvl2;
  return processor::dispatchPieces<Next>(priority, volumeSplit<Next, attr::InSubImg3d>(from),
                                         volumeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
                                         processor::staticNoSplit<Next, attr::InKnlXYZ>(kernel),
                                         processor::staticNoSplit<Next, attr::InNormalize>(true),
                                         processor::staticNoSplit<Next, attr::InConvolBorder3d>(_border));
}

namespace {

using Call = processor::CallForms<GaussianSmoothing3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InStdDevX,
                                  attr::InStdDevY, attr::InStdDevZ>;
using CallWithCoverage =
    processor::CallForms<GaussianSmoothing3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InStdDevX,
                         attr::InStdDevY, attr::InStdDevZ, attr::InOptSmoothingGaussianCoverage>;

}  // namespace

boost::shared_ptr<image::BaseImage> gaussianSmoothing3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg3d, float stdDev) {
  return Call::run(inImg3d, stdDev, stdDev, stdDev);
}

boost::shared_ptr<image::BaseImage> gaussianSmoothing3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg3d, float stdDevX, float stdDevY, float stdDevZ,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage) {
  return CallWithCoverage::run(inImg3d, stdDevX, stdDevY, stdDevZ, coverage);
}

void gaussianSmoothing3dImg(const boost::shared_ptr<const image::BaseImage>& inImg3d, float stdDevX,
                            float stdDevY, float stdDevZ,
                            const boost::shared_ptr<const attr::GaussianCoverage>& coverage,
                            const boost::shared_ptr<image::BaseImage>& outImg) {
  CallWithCoverage::fill(inImg3d, stdDevX, stdDevY, stdDevZ, coverage, outImg);
}

boost::shared_ptr<GaussianSmoothing3dImgLvl1> gaussianSmoothing3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg3d, float stdDev) {
  return Call::start(inImg3d, stdDev, stdDev, stdDev);
}

boost::shared_ptr<GaussianSmoothing3dImgLvl1> gaussianSmoothing3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg3d, float stdDevX, float stdDevY, float stdDevZ,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage) {
  return CallWithCoverage::start(inImg3d, stdDevX, stdDevY, stdDevZ, coverage);
}

boost::shared_ptr<GaussianSmoothing3dImgLvl1> gaussianSmoothing3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg3d, float stdDevX, float stdDevY, float stdDevZ,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return CallWithCoverage::startFill(inImg3d, stdDevX, stdDevY, stdDevZ, coverage, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<GaussianSmoothing3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
