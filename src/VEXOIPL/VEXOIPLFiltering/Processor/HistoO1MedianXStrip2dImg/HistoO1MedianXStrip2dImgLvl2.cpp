#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<HistoO1MedianXStrip2dImgLvl2> registrator;

}  // namespace

// In place the output needs no buffer of its own: the kernel loads every row of its strip before it writes
// over it.
BoolResult HistoO1MedianXStrip2dImgLvl2::retrieveProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  const auto margins = centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>());
  provider = dispatchColumns<HistoO1MedianXStrip2dImgLvl3>(
      priority, *this, margins, image::eStripAllocationType::View,
      processor::dynamicNoSplit<HistoO1MedianXStrip2dImgLvl3, attr::InInputRange>(
          getStorage<attr::InInputRange>()));
  return true;
}

}  // namespace vexo::imaproc::filter
