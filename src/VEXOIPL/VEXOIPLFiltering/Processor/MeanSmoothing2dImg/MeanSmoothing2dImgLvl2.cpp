#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<MeanSmoothing2dImgLvl2> registrator;

}  // namespace

// In place, the margins of each strip are saved before the first strip starts. The output needs no buffer of
// its own: the kernel loads every row of its strip before it writes over it.
BoolResult MeanSmoothing2dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  const auto margins = centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>());
  provider =
      dispatchRows<MeanSmoothing2dImgLvl3>(priority, *this, margins, image::eStripAllocationType::View);
  return true;
}

}  // namespace vexo::imaproc::filter
