#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution3dImgLvl1> registrator;

}  // namespace

void Convolution3dImgLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutImg"] = promoteUnary<attr::InImg3d, attr::OutImg>(accessAttribute<attr::OutImg>(),
                                                                     accessAttribute<attr::InImg3d>());
}

processor::RulePtr Convolution3dImgLvl1::createRule() const {
  return matchSize(accessAttribute<attr::InImg3d>(), accessAttribute<attr::OutImg>());
}

BoolResult Convolution3dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                  boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = Convolution3dImgLvl2;
  provider = processor::dispatchPieces<Next>(
      priority, volumeSplit<Next, attr::InSubImg3d>(getStorage<attr::InImg3d>()),
      volumeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
      processor::staticNoSplit<Next, attr::InKnlXYZ>(getStorage<attr::InKnlXYZ>()),
      processor::staticNoSplit<Next, attr::InNormalize>(getStorage<attr::InNormalize>()),
      processor::staticNoSplit<Next, attr::InConvolBorder3d>(getStorage<attr::InOptConvolBorder3d>()));
  return true;
}

namespace {

using Call = processor::CallForms<Convolution3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InKnlXYZ,
                                  attr::InNormalize>;
using CallWithBorder = processor::CallForms<Convolution3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InKnlXYZ,
                                            attr::InNormalize, attr::InOptConvolBorder3d>;

}  // namespace

boost::shared_ptr<image::BaseImage> convolution3dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                     const boost::shared_ptr<const KernelXYZ>& kernel,
                                                     bool normalize) {
  return Call::run(inImg, kernel, normalize);
}

boost::shared_ptr<image::BaseImage> convolution3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXYZ>& kernel,
    bool normalize, const boost::shared_ptr<const image::Border3dPolicy>& border) {
  return CallWithBorder::run(inImg, kernel, normalize, border);
}

void convolution3dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                      const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
                      const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, kernel, normalize, outImg);
}

void convolution3dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                      const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
                      const boost::shared_ptr<const image::Border3dPolicy>& border,
                      const boost::shared_ptr<image::BaseImage>& outImg) {
  CallWithBorder::fill(inImg, kernel, normalize, border, outImg);
}

boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXYZ>& kernel,
    bool normalize) {
  return Call::start(inImg, kernel, normalize);
}

boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXYZ>& kernel,
    bool normalize, const boost::shared_ptr<const image::Border3dPolicy>& border) {
  return CallWithBorder::start(inImg, kernel, normalize, border);
}

boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXYZ>& kernel,
    bool normalize, const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, kernel, normalize, outImg);
}

boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, const boost::shared_ptr<const KernelXYZ>& kernel,
    bool normalize, const boost::shared_ptr<const image::Border3dPolicy>& border,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return CallWithBorder::startFill(inImg, kernel, normalize, border, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<Convolution3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
