#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateral2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateral2dImgLvl3.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateralPass.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<SeparatedBilateral2dImgLvl2> registrator;

}  // namespace

BoolResult SeparatedBilateral2dImgLvl2::retrieveFirstProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
  if (convertSingleSamples(getStorage<attr::InSubImg2d>(), getStorage<attr::OutImg>(), half)) return true;
  provider = makePass<SeparatedBilateralX2dImgLvl3, image::eStripParsingDirection::Y>(
      priority, *this, getStorage<attr::InSubImg2d>(), centredMargins(half, 0));
  return true;
}

BoolResult SeparatedBilateral2dImgLvl2::retrieveSecondProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
  if (half == 0) return true;
  provider = makePass<SeparatedBilateralY2dImgLvl3, image::eStripParsingDirection::Y>(
      priority, *this, getStorage<attr::OutImg>(), centredMargins(0, half));
  return true;
}

}  // namespace vexo::imaproc::filter
