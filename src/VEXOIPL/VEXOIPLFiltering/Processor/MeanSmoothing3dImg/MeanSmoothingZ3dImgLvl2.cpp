#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothingZ3dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothingZ3dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothingZ3dImgLvl2> registrator;

}  // namespace

// Each strip has some rows of all slices: it reads no other strip's, and all of them run along Z at once. In
// place, the slices that the border sends it back to are saved before the first strip starts; the kernel
// loads every other sample before it writes over it.
BoolResult MeanSmoothingZ3dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                     boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = dispatchWindowStrips<MeanSmoothingZ3dImgLvl3, attr::InSubImg3d, attr::InKnlZStrip3d,
                                  attr::OutZStrip3d, image::eStripParsingDirection::Y>(
      priority, *this, centredMargins(0, 0, getStorage<attr::InHalfKnlSizeZ>()),
      image::eStripAllocationType::View);
  return true;
}

}  // namespace vexo::imaproc::filter
