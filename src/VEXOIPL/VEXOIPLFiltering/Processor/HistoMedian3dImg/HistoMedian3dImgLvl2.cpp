#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<HistoMedian3dImgLvl2> registrator;

}  // namespace

// In place the results of a strip stay in a buffer of its own until all of it has been read: the slices of a
// window are loaded again for each slice.
BoolResult HistoMedian3dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                  boost::shared_ptr<core::BaseActionProvider>& provider) {
  const auto margins = centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>(),
                                      getStorage<attr::InHalfKnlSizeZ>());
  provider = dispatchSlices<HistoMedian3dImgLvl3>(
      priority, *this, margins, image::eStripAllocationType::OwnBuffer,
      processor::dynamicNoSplit<HistoMedian3dImgLvl3, attr::InInputRange>(getStorage<attr::InInputRange>()));
  return true;
}

}  // namespace vexo::imaproc::filter
