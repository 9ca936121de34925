#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateralPass.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<SeparatedBilateral3dImgLvl2> registrator;

}  // namespace

BoolResult SeparatedBilateral3dImgLvl2::retrieveFirstProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
  if (convertSingleSamples(getStorage<attr::InSubImg3d>(), getStorage<attr::OutImg>(), half)) return true;
  provider = makePass<SeparatedBilateralX3dImgLvl3, image::eStripParsingDirection::Z>(
      priority, *this, getStorage<attr::InSubImg3d>(), centredMargins(half, 0, 0));
  return true;
}

BoolResult SeparatedBilateral3dImgLvl2::retrieveSecondProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
  if (half == 0) return true;
  provider = makePass<SeparatedBilateralY3dImgLvl3, image::eStripParsingDirection::Z>(
      priority, *this, getStorage<attr::OutImg>(), centredMargins(0, half, 0));
  return true;
}

// Each strip has some rows of all slices: all of them are walked at once.
BoolResult SeparatedBilateral3dImgLvl2::retrieveThirdProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
  if (half == 0) return true;
  provider = makePass<SeparatedBilateralZ3dImgLvl3, image::eStripParsingDirection::Y>(
      priority, *this, getStorage<attr::OutImg>(), centredMargins(0, 0, half));
  return true;
}

}  // namespace vexo::imaproc::filter
