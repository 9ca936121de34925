#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<K33Median2dImgLvl2> registrator;

}  // namespace

// In place the output needs no buffer of its own: the kernel loads every row of its strip before it writes
// over it.
BoolResult K33Median2dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = dispatchRows<K33Median2dImgLvl3>(priority, *this, centredMargins(1, 1),
                                              image::eStripAllocationType::View);
  return true;
}

}  // namespace vexo::imaproc::filter
