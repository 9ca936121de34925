#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothingZ3dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothingZ3dImgLvl3.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothingZ3dImgLvl2> registrator;

}  // namespace

// Each strip has some rows of all slices: it reads no other strip's, and all of them run along Z at once. In
// place, the slices that the border sends it back to are saved before the first strip starts; the kernel
// loads every other sample before it writes over it.
BoolResult MeanSmoothingZ3dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                     boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = MeanSmoothingZ3dImgLvl3;
  const auto allocation = isInSitu(accessAttribute<attr::InSubImg3d>(), accessAttribute<attr::OutImg>())
                              ? image::eStripAllocationType::OwnBuffer
                              : image::eStripAllocationType::View;
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageYStrip3dWithKernelSplit<Next, const image::BaseImage, attr::InKnlZStrip3d>>(
          getStorage<attr::InSubImg3d>(), allocation,
          centredMargins(0, 0, getStorage<attr::InHalfKnlSizeZ>())),
      boost::make_shared<ImageYStrip3dSplit<Next, image::BaseImage, attr::OutZStrip3d>>(
          getStorage<attr::OutImg>(), image::eStripAllocationType::View));
  return true;
}

}  // namespace vexo::imaproc::filter
