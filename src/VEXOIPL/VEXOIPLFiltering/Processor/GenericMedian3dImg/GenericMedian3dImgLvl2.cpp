#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GenericMedian3dImgLvl2> registrator;

}  // namespace

// In place, the results of a strip stay in a buffer of its own until all of it has been read.
BoolResult GenericMedian3dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  const auto margins = centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>(),
                                      getStorage<attr::InHalfKnlSizeZ>());
  provider = dispatchSlices<GenericMedian3dImgLvl3>(priority, *this, margins,
                                                    image::eStripAllocationType::OwnBuffer);
  return true;
}

}  // namespace vexo::imaproc::filter
