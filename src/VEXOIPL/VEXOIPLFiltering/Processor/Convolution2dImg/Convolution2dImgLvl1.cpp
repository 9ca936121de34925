#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<Convolution2dImgLvl1, Convolution2dImgLvl2, Convolution2dImgLvl3,
                        Convolution2dImgGpuLvl3>
    registrator;

using Call =
    processor::CallForms<Convolution2dImgLvl1, attr::OutImg, attr::InImg, attr::InKnlXY, attr::InNormalize>;
using CallWithBorder = processor::CallForms<Convolution2dImgLvl1, attr::OutImg, attr::InImg, attr::InKnlXY,
                                            attr::InNormalize, attr::InOptConvolBorder2d>;

}  // namespace

BoolResult Convolution2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                  core::ProviderPtr& provider) {
  provider = dispatchPlanes<Convolution2dImgLvl2>(
      priority, *this, with<attr::InConvolBorder2d>(getStorage<attr::InOptConvolBorder2d>()));
  return true;
}

image::ImagePtr convolution2dImg(const image::ConstImagePtr& inImg,
                                 const boost::shared_ptr<const KernelXY>& kernel, bool normalize) {
  return Call::run(inImg, kernel, normalize);
}
image::ImagePtr convolution2dImg(const image::ConstImagePtr& inImg,
                                 const boost::shared_ptr<const KernelXY>& kernel, bool normalize,
                                 const boost::shared_ptr<const image::Border2dPolicy>& border) {
  return CallWithBorder::run(inImg, kernel, normalize, border);
}
void convolution2dImg(const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXY>& kernel,
                      bool normalize, const image::ImagePtr& outImg) {
  Call::fill(inImg, kernel, normalize, outImg);
}
void convolution2dImg(const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXY>& kernel,
                      bool normalize, const boost::shared_ptr<const image::Border2dPolicy>& border,
                      const image::ImagePtr& outImg) {
  CallWithBorder::fill(inImg, kernel, normalize, border, outImg);
}
boost::shared_ptr<Convolution2dImgLvl1> convolution2dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXY>& kernel, bool normalize) {
  return Call::start(inImg, kernel, normalize);
}
boost::shared_ptr<Convolution2dImgLvl1> convolution2dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXY>& kernel, bool normalize,
    const boost::shared_ptr<const image::Border2dPolicy>& border) {
  return CallWithBorder::start(inImg, kernel, normalize, border);
}
boost::shared_ptr<Convolution2dImgLvl1> convolution2dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXY>& kernel, bool normalize,
    const image::ImagePtr& outImg) {
  return Call::startFill(inImg, kernel, normalize, outImg);
}
boost::shared_ptr<Convolution2dImgLvl1> convolution2dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXY>& kernel, bool normalize,
    const boost::shared_ptr<const image::Border2dPolicy>& border, const image::ImagePtr& outImg) {
  return CallWithBorder::startFill(inImg, kernel, normalize, border, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Convolution2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
