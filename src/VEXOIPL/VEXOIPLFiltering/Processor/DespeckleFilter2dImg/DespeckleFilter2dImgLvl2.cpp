#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<DespeckleFilter2dImgLvl2> registrator;

}  // namespace

processor::RulePtr DespeckleFilter2dImgLvl2::createRule() const {
  return matchSizeAndType(accessAttribute<attr::InSubImg2d>(), accessAttribute<attr::OutImg>());
}

// In place the kernel keeps whole rows of its window, in double precision. Where that would be much memory,
// results wait in a buffer of their strip instead.
BoolResult DespeckleFilter2dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                      boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = DespeckleFilter2dImgLvl3;
  using image::eStripAllocationType;
  constexpr std::size_t largestWindow = 256 * 1024;  // samples
  const auto halfY = getStorage<attr::InHalfKnlSizeY>();
  const bool large = getStorage<attr::InSubImg2d>()->getSizeX() > largestWindow / (2 * halfY + 1);
  provider =
      dispatchRows<Next>(priority, *this, centredMargins(getStorage<attr::InHalfKnlSizeX>(), halfY),
                         large ? eStripAllocationType::OwnBuffer : eStripAllocationType::View,
                         processor::dynamicNoSplit<Next, attr::InFactor>(getStorage<attr::InFactor>()));
  return true;
}

}  // namespace vexo::imaproc::filter
