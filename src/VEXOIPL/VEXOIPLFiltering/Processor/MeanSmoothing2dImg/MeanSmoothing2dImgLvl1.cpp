#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/MeanSmoothing/BoxKernel.h"
#include "VEXOIPL/VEXOIPLFiltering/MeanSmoothing/MeanChoice.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLevels.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

// Makes the classes known by name while the library is loaded, and their kernels.
const FilterRegistrator<MeanSmoothing2dImgLvl1, MeanSmoothing2dImgLvl2, MeanSmoothing2dImgLvl3> registrator;

// What the free functions do: run the processor, or start it, with these attributes set from their arguments.
using Call = processor::CallForms<MeanSmoothing2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY>;

}  // namespace

// What explain() tells of a run before it. During the run each choice is recorded where it is made.
processor::ChoiceColl MeanSmoothing2dImgLvl1::foreseeChoices() const {
  return {chooseMean<Convolution2dImgLvl2, MeanSmoothing2dImgLvl2>(*getStorage<attr::InImg>())};
}

// The choice of implementation. Each plane is a piece; the attributes of level 2 that have no value given
// here get those of the same name. On the GPU the mean is a convolution with a box of ones.
BoolResult MeanSmoothing2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    core::ProviderPtr& provider) {
  recordChoice(foreseeChoices().front());
  if (getStorage<attr::InImg>()->isGpuImage()) {
    const auto box = makeBoxKernel(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>());
    provider = dispatchPlanes<Convolution2dImgLvl2>(priority, *this, with<attr::InKnlXY>(box),
                                                    with<attr::InNormalize>(true),
                                                    with<attr::InConvolBorder2d>(image::mirorBorder2d()));
  } else {
    provider = dispatchPlanes<MeanSmoothing2dImgLvl2>(priority, *this);
  }
  return true;
}

image::ImagePtr meanSmoothing2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                   std::uint32_t inHalfKnlSizeY) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}
void meanSmoothing2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY, const image::ImagePtr& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}
boost::shared_ptr<MeanSmoothing2dImgLvl1> meanSmoothing2dImg_async(const image::ConstImagePtr& inImg,
                                                                   std::uint32_t inHalfKnlSizeX,
                                                                   std::uint32_t inHalfKnlSizeY) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}
boost::shared_ptr<MeanSmoothing2dImgLvl1> meanSmoothing2dImg_async(const image::ConstImagePtr& inImg,
                                                                   std::uint32_t inHalfKnlSizeX,
                                                                   std::uint32_t inHalfKnlSizeY,
                                                                   const image::ImagePtr& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<MeanSmoothing2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
