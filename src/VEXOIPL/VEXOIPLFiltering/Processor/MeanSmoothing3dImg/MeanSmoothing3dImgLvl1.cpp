#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothing3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl2.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/BoxKernel.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothingZ3dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing3dImgLvl1> registrator;

}  // namespace

processor::ChoiceColl MeanSmoothing3dImgLvl1::foreseeChoices() const {
  return {getStorage<attr::InImg3d>()->isGpuImage()
              ? processor::choiceOf<Convolution3dImgLvl2>("the image is in the memory of the GPU")
              : processor::choiceOf<MeanSmoothing2dImgLvl1>("the image is in the memory of the host")};
}

// On the GPU one normalised convolution with a box of ones does all of it, and the second provider nothing.
BoolResult MeanSmoothing3dImgLvl1::retrieveFirstProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  recordChoice(foreseeChoices().front());
  if (getStorage<attr::InImg3d>()->isGpuImage()) {
    using Next = Convolution3dImgLvl2;
    const auto box = makeBoxKernel(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>(),
                                   getStorage<attr::InHalfKnlSizeZ>());
    provider = processor::dispatchPieces<Next>(
        priority, volumeSplit<Next, attr::InSubImg3d>(getStorage<attr::InImg3d>()),
        volumeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
        processor::staticNoSplit<Next, attr::InConvolBorder3d>(image::mirorBorder3d()),
        processor::staticNoSplit<Next, attr::InNormalize>(true),
        processor::staticNoSplit<Next, attr::InKnlXYZ>(box));
    return true;
  }
  provider = processor::makeSingleActionProvider(
      processor::prepareCall<MeanSmoothing2dImgLvl1, attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                             attr::OutImg>(getStorage<attr::InImg3d>(), getStorage<attr::InHalfKnlSizeX>(),
                                           getStorage<attr::InHalfKnlSizeY>(), getStorage<attr::OutImg>()));
  return true;
}

// Works in place, on the smoothed slices. A window of one slice changes nothing.
BoolResult MeanSmoothing3dImgLvl1::retrieveSecondProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = MeanSmoothingZ3dImgLvl2;
  if (getStorage<attr::InHalfKnlSizeZ>() == 0 || getStorage<attr::InImg3d>()->isGpuImage()) return true;
  provider = processor::dispatchPieces<Next>(
      priority, volumeSplit<Next, attr::InSubImg3d>(getStorage<attr::OutImg>()),
      volumeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeZ>(getStorage<attr::InHalfKnlSizeZ>()));
  return true;
}

namespace {

using Call = processor::CallForms<MeanSmoothing3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ>;

}  // namespace

boost::shared_ptr<image::BaseImage> meanSmoothing3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg3d, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ) {
  return Call::run(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}

void meanSmoothing3dImg(const boost::shared_ptr<const image::BaseImage>& inImg3d,
                        std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                        std::uint32_t inHalfKnlSizeZ, const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}

boost::shared_ptr<MeanSmoothing3dImgLvl1> meanSmoothing3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg3d, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ) {
  return Call::start(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}

boost::shared_ptr<MeanSmoothing3dImgLvl1> meanSmoothing3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg3d, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<MeanSmoothing3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
