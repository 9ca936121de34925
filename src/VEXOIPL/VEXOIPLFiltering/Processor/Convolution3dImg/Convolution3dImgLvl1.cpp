#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<Convolution3dImgLvl1, Convolution3dImgLvl2, Convolution3dImgLvl3,
                        Convolution3dImgGpuLvl3>
    registrator;

using Call = processor::CallForms<Convolution3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InKnlXYZ,
                                  attr::InNormalize>;
using CallWithBorder = processor::CallForms<Convolution3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InKnlXYZ,
                                            attr::InNormalize, attr::InOptConvolBorder3d>;

}  // namespace

BoolResult Convolution3dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                  core::ProviderPtr& provider) {
  provider = dispatchVolumes<Convolution3dImgLvl2>(
      priority, *this, with<attr::InConvolBorder3d>(getStorage<attr::InOptConvolBorder3d>()));
  return true;
}

image::ImagePtr convolution3dImg(const image::ConstImagePtr& inImg,
                                 const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize) {
  return Call::run(inImg, kernel, normalize);
}
image::ImagePtr convolution3dImg(const image::ConstImagePtr& inImg,
                                 const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
                                 const boost::shared_ptr<const image::Border3dPolicy>& border) {
  return CallWithBorder::run(inImg, kernel, normalize, border);
}
void convolution3dImg(const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel,
                      bool normalize, const image::ImagePtr& outImg) {
  Call::fill(inImg, kernel, normalize, outImg);
}
void convolution3dImg(const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel,
                      bool normalize, const boost::shared_ptr<const image::Border3dPolicy>& border,
                      const image::ImagePtr& outImg) {
  CallWithBorder::fill(inImg, kernel, normalize, border, outImg);
}
boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize) {
  return Call::start(inImg, kernel, normalize);
}
boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
    const boost::shared_ptr<const image::Border3dPolicy>& border) {
  return CallWithBorder::start(inImg, kernel, normalize, border);
}
boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
    const image::ImagePtr& outImg) {
  return Call::startFill(inImg, kernel, normalize, outImg);
}
boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
    const boost::shared_ptr<const image::Border3dPolicy>& border, const image::ImagePtr& outImg) {
  return CallWithBorder::startFill(inImg, kernel, normalize, border, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Convolution3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
