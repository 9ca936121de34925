#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution2dImgLvl1> registrator;

}  // namespace

void Convolution2dImgLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutImg"] = promoteUnary<attr::InImg, attr::OutImg>(accessAttribute<attr::OutImg>(),
                                                                   accessAttribute<attr::InImg>());
}

processor::RulePtr Convolution2dImgLvl1::createRule() const {
  return matchSize(accessAttribute<attr::InImg>(), accessAttribute<attr::OutImg>());
}

BoolResult Convolution2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                  boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = Convolution2dImgLvl2;
  provider = processor::dispatchPieces<Next>(
      priority, planeSplit<Next, attr::InSubImg2d>(getStorage<attr::InImg>()),
      planeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
      processor::staticNoSplit<Next, attr::InKnlXY>(getStorage<attr::InKnlXY>()),
      processor::staticNoSplit<Next, attr::InNormalize>(getStorage<attr::InNormalize>()),
      processor::staticNoSplit<Next, attr::InConvolBorder2d>(getStorage<attr::InOptConvolBorder2d>()));
  return true;
}

namespace {

using Call =
    processor::CallForms<Convolution2dImgLvl1, attr::OutImg, attr::InImg, attr::InKnlXY, attr::InNormalize>;
using CallWithBorder = processor::CallForms<Convolution2dImgLvl1, attr::OutImg, attr::InImg, attr::InKnlXY,
                                            attr::InNormalize, attr::InOptConvolBorder2d>;

}  // namespace

boost::shared_ptr<image::BaseImage> convolution2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                     const boost::shared_ptr<const KernelXY>& kernel,
                                                     bool normalize) {
  return Call::run(inImg, kernel, normalize);
}

boost::shared_ptr<image::BaseImage> convolution2dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXY>& kernel,
    bool normalize, const boost::shared_ptr<const image::Border2dPolicy>& border) {
  return CallWithBorder::run(inImg, kernel, normalize, border);
}

void convolution2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                      const boost::shared_ptr<const KernelXY>& kernel, bool normalize,
                      const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, kernel, normalize, outImg);
}

void convolution2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                      const boost::shared_ptr<const KernelXY>& kernel, bool normalize,
                      const boost::shared_ptr<const image::Border2dPolicy>& border,
                      const boost::shared_ptr<image::BaseImage>& outImg) {
  CallWithBorder::fill(inImg, kernel, normalize, border, outImg);
}

boost::shared_ptr<Convolution2dImgLvl1> convolution2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXY>& kernel,
    bool normalize) {
  return Call::start(inImg, kernel, normalize);
}

boost::shared_ptr<Convolution2dImgLvl1> convolution2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXY>& kernel,
    bool normalize, const boost::shared_ptr<const image::Border2dPolicy>& border) {
  return CallWithBorder::start(inImg, kernel, normalize, border);
}

boost::shared_ptr<Convolution2dImgLvl1> convolution2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXY>& kernel,
    bool normalize, const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, kernel, normalize, outImg);
}

boost::shared_ptr<Convolution2dImgLvl1> convolution2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXY>& kernel,
    bool normalize, const boost::shared_ptr<const image::Border2dPolicy>& border,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return CallWithBorder::startFill(inImg, kernel, normalize, border, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<Convolution2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
