#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Bilateral3dImgLvl2> registrator;

}  // namespace

// Each strip has some rows of all slices: the fewest rows are read twice. In place its results stay in a
// buffer of its own until all of it has been read: the border sends windows back to slices that are done.
BoolResult Bilateral3dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = Bilateral3dImgLvl3;
  const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
  if (convertSingleSamples(getStorage<attr::InSubImg3d>(), getStorage<attr::OutImg>(), half)) return true;
  provider = dispatchWindowStrips<Next, attr::InSubImg3d, attr::InKnlZStrip3d, attr::OutZStrip3d,
                                  image::eStripParsingDirection::Y>(
      priority, *this, centredMargins(half, half, half), image::eStripAllocationType::OwnBuffer,
      scaleSplit<Next>(*this), spaceSplit<Next>(*this), rangeSplit<Next>(*this));
  return true;
}

}  // namespace vexo::imaproc::filter
