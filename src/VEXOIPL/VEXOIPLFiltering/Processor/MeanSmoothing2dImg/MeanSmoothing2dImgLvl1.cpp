#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl2.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/BoxKernel.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

// Makes the class known by name while the library is loaded; each level has such a line.
const processor::ProcessorRegistrator<MeanSmoothing2dImgLvl1> registrator;

}  // namespace

// What explain() tells of a run before it. During the run each choice is recorded where it is made.
processor::ChoiceColl MeanSmoothing2dImgLvl1::foreseeChoices() const {
  return {getStorage<attr::InImg>()->isGpuImage()
              ? processor::choiceOf<Convolution2dImgLvl2>("the image is in the memory of the GPU")
              : processor::choiceOf<MeanSmoothing2dImgLvl2>("the image is in the memory of the host")};
}

namespace {

// On the GPU the mean is a convolution with a box of ones.
boost::shared_ptr<core::BaseActionProvider> convolveOnGpu(const MeanSmoothing2dImgLvl1& mean,
                                                          const core::BasePriority& priority) {
  using Next = Convolution2dImgLvl2;
  const auto box =
      makeBoxKernel(mean.getStorage<attr::InHalfKnlSizeX>(), mean.getStorage<attr::InHalfKnlSizeY>());
  return processor::dispatchPieces<Next>(
      priority, planeSplit<Next, attr::InSubImg2d>(mean.getStorage<attr::InImg>()),
      planeSplit<Next, attr::OutImg>(mean.getStorage<attr::OutImg>()),
      processor::staticNoSplit<Next, attr::InConvolBorder2d>(image::mirorBorder2d()),
      processor::staticNoSplit<Next, attr::InNormalize>(true),
      processor::staticNoSplit<Next, attr::InKnlXY>(box));
}

}  // namespace

// The choice of implementation. On the host each plane is a piece, the half sizes go to all of them.
BoolResult MeanSmoothing2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  recordChoice(foreseeChoices().front());
  if (getStorage<attr::InImg>()->isGpuImage()) {
    provider = convolveOnGpu(*this, priority);
    return true;
  }
  provider = dispatchPlanes<MeanSmoothing2dImgLvl2, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY>(
      priority, *this, getStorage<attr::InImg>());
  return true;
}

namespace {

// What the free functions do: run the processor, or start it, with these attributes set from their arguments.
using Call = processor::CallForms<MeanSmoothing2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY>;

}  // namespace

boost::shared_ptr<image::BaseImage> meanSmoothing2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                       std::uint32_t inHalfKnlSizeX,
                                                       std::uint32_t inHalfKnlSizeY) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

void meanSmoothing2dImg(const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<MeanSmoothing2dImgLvl1> meanSmoothing2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

boost::shared_ptr<MeanSmoothing2dImgLvl1> meanSmoothing2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<MeanSmoothing2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
