#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<K55Median2dImgLvl2> registrator;

}  // namespace

// In place the output needs no buffer of its own: the kernel loads every row of its strip before it writes
// over it.
BoolResult K55Median2dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = dispatchRows<K55Median2dImgLvl3>(priority, *this, centredMargins(2, 2),
                                              image::eStripAllocationType::View);
  return true;
}

}  // namespace vexo::imaproc::filter
