#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/Bilateral2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/Bilateral2dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Bilateral2dImgLvl2> registrator;

}  // namespace

// In place the output needs no buffer of its own: the kernel loads every row of its strip before it writes
// over it.
BoolResult Bilateral2dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = Bilateral2dImgLvl3;
  const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
  if (convertSingleSamples(getStorage<attr::InSubImg2d>(), getStorage<attr::OutImg>(), half)) return true;
  provider =
      dispatchRows<Next>(priority, *this, centredMargins(half, half), image::eStripAllocationType::View,
                         scaleSplit<Next>(*this), spaceSplit<Next>(*this), rangeSplit<Next>(*this));
  return true;
}

}  // namespace vexo::imaproc::filter
