#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothing3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/MeanSmoothing/BoxKernel.h"
#include "VEXOIPL/VEXOIPLFiltering/MeanSmoothing/MeanChoice.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLevels.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothing3dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<MeanSmoothing3dImgLvl1, MeanSmoothingZ3dImgLvl2, MeanSmoothingZ3dImgLvl3> registrator;

using Call = processor::CallForms<MeanSmoothing3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ>;

}  // namespace

processor::ChoiceColl MeanSmoothing3dImgLvl1::foreseeChoices() const {
  return {chooseMean<Convolution3dImgLvl2, MeanSmoothing2dImgLvl1>(*getStorage<attr::InImg3d>())};
}

// On the GPU one normalised convolution with a box of ones does all of it, and the second provider nothing.
BoolResult MeanSmoothing3dImgLvl1::retrieveFirstProvider(const core::BasePriority& priority,
                                                         core::ProviderPtr& provider) {
  recordChoice(foreseeChoices().front());
  if (getStorage<attr::InImg3d>()->isGpuImage()) {
    const auto box = makeBoxKernel(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>(),
                                   getStorage<attr::InHalfKnlSizeZ>());
    provider = dispatchVolumes<Convolution3dImgLvl2>(priority, *this, with<attr::InKnlXYZ>(box),
                                                     with<attr::InNormalize>(true),
                                                     with<attr::InConvolBorder3d>(image::mirorBorder3d()));
    return true;
  }
  provider = runChild<MeanSmoothing2dImgLvl1>(*this);
  return true;
}

// Works in place, on the smoothed slices. A window of one slice changes nothing.
BoolResult MeanSmoothing3dImgLvl1::retrieveSecondProvider(const core::BasePriority& priority,
                                                          core::ProviderPtr& provider) {
  if (getStorage<attr::InHalfKnlSizeZ>() == 0 || getStorage<attr::InImg3d>()->isGpuImage()) return true;
  const auto output = getStorage<attr::OutImg>();
  provider = dispatchVolumes<MeanSmoothingZ3dImgLvl2>(priority, *this, LevelImages({output}, {output}));
  return true;
}

image::ImagePtr meanSmoothing3dImg(const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX,
                                   std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ) {
  return Call::run(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}
void meanSmoothing3dImg(const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                        const image::ImagePtr& outImg) {
  Call::fill(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}
boost::shared_ptr<MeanSmoothing3dImgLvl1> meanSmoothing3dImg_async(const image::ConstImagePtr& inImg3d,
                                                                   std::uint32_t inHalfKnlSizeX,
                                                                   std::uint32_t inHalfKnlSizeY,
                                                                   std::uint32_t inHalfKnlSizeZ) {
  return Call::start(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}
boost::shared_ptr<MeanSmoothing3dImgLvl1> meanSmoothing3dImg_async(const image::ConstImagePtr& inImg3d,
                                                                   std::uint32_t inHalfKnlSizeX,
                                                                   std::uint32_t inHalfKnlSizeY,
                                                                   std::uint32_t inHalfKnlSizeZ,
                                                                   const image::ImagePtr& outImg) {
  return Call::startFill(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<MeanSmoothing3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
