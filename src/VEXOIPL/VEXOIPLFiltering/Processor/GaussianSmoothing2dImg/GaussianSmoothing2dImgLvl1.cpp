#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianSmoothing2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl2.h"
#include "VEXOMath/Gaussian.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GaussianSmoothing2dImgLvl1> registrator;

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
  _border = image::mirorBorder2d();
  return true;
}

BoolResult GaussianSmoothing2dImgLvl1::retrieveFirstProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = makePass(priority, getStorage<attr::InImg>(), _kernelY);
  return true;
}

BoolResult GaussianSmoothing2dImgLvl1::retrieveSecondProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = makePass(priority, getStorage<attr::OutImg>(), _kernelX);
  return true;
}

void GaussianSmoothing2dImgLvl1::clearIntermediateData() {
  _kernelX.reset();
  _kernelY.reset();
  _border.reset();
}

boost::shared_ptr<core::BaseActionProvider> GaussianSmoothing2dImgLvl1::makePass(
    const core::BasePriority& priority, const boost::shared_ptr<const image::BaseImage>& from,
    const boost::shared_ptr<const KernelXY>& kernel) const {
  using Next = Convolution2dImgLvl2;
  return processor::dispatchPieces<Next>(priority, planeSplit<Next, attr::InSubImg2d>(from),
                                         planeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
                                         processor::staticNoSplit<Next, attr::InKnlXY>(kernel),
                                         processor::staticNoSplit<Next, attr::InNormalize>(true),
                                         processor::staticNoSplit<Next, attr::InConvolBorder2d>(_border));
}

namespace {

using Call = processor::CallForms<GaussianSmoothing2dImgLvl1, attr::OutImg, attr::InImg, attr::InStdDevX,
                                  attr::InStdDevY>;
using CallWithCoverage =
    processor::CallForms<GaussianSmoothing2dImgLvl1, attr::OutImg, attr::InImg, attr::InStdDevX,
                         attr::InStdDevY, attr::InOptSmoothingGaussianCoverage>;

}  // namespace

boost::shared_ptr<image::BaseImage> gaussianSmoothing2dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, float stdDev) {
  return Call::run(inImg, stdDev, stdDev);
}

boost::shared_ptr<image::BaseImage> gaussianSmoothing2dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, float stdDevX, float stdDevY,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage) {
  return CallWithCoverage::run(inImg, stdDevX, stdDevY, coverage);
}

void gaussianSmoothing2dImg(const boost::shared_ptr<const image::BaseImage>& inImg, float stdDevX,
                            float stdDevY, const boost::shared_ptr<const attr::GaussianCoverage>& coverage,
                            const boost::shared_ptr<image::BaseImage>& outImg) {
  CallWithCoverage::fill(inImg, stdDevX, stdDevY, coverage, outImg);
}

boost::shared_ptr<GaussianSmoothing2dImgLvl1> gaussianSmoothing2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, float stdDev) {
  return Call::start(inImg, stdDev, stdDev);
}

boost::shared_ptr<GaussianSmoothing2dImgLvl1> gaussianSmoothing2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, float stdDevX, float stdDevY,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage) {
  return CallWithCoverage::start(inImg, stdDevX, stdDevY, coverage);
}

boost::shared_ptr<GaussianSmoothing2dImgLvl1> gaussianSmoothing2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, float stdDevX, float stdDevY,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return CallWithCoverage::startFill(inImg, stdDevX, stdDevY, coverage, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<GaussianSmoothing2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
