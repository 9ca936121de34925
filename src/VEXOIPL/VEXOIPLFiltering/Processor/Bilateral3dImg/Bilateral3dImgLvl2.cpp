#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Bilateral3dImgLvl2> registrator;

}  // namespace

// In place the results of a strip stay in a buffer of its own until all of it has been read: the slices of a
// window are loaded again for each slice.
BoolResult Bilateral3dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = Bilateral3dImgLvl3;
  const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
  if (convertSingleSamples(getStorage<attr::InSubImg3d>(), getStorage<attr::OutImg>(), half)) return true;
  provider = dispatchSlices<Next>(priority, *this, centredMargins(half, half, half),
                                  image::eStripAllocationType::OwnBuffer, scaleSplit<Next>(*this),
                                  spaceSplit<Next>(*this), rangeSplit<Next>(*this));
  return true;
}

}  // namespace vexo::imaproc::filter
