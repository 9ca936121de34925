#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl2.h"

#include "VEXOCore/Gpu.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgGpuLvl3.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution3dImgLvl2> registrator;

}  // namespace

bool Convolution3dImgLvl2::tryToLaunchGpuProcess(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) const {
  const auto input = getStorage<attr::InSubImg3d>();
  if (!core::isGpuSupportActivated() || !input->isGpuImage()) return false;
  using Next = Convolution3dImgGpuLvl3;
  constexpr auto pieces = eSubImageSplitType::Volume3d;
  provider = processor::dispatchPieces<Next>(
      priority, boost::make_shared<CudaSubImageSplit<Next, attr::InSubGpuImg>>(input, pieces),
      boost::make_shared<CudaSubImageSplit<Next, attr::OutImg>>(getStorage<attr::OutImg>(), pieces),
      processor::staticNoSplit<Next, attr::InKnlXYZ>(getStorage<attr::InKnlXYZ>()),
      processor::staticNoSplit<Next, attr::InNormalize>(getStorage<attr::InNormalize>()),
      processor::staticNoSplit<Next, attr::InConvolBorder3d>(getStorage<attr::InConvolBorder3d>()));
  return true;
}

// A kernel along Z is run on strips of some rows of all slices, which need no margins from each other; others
// on strips of slices. In place, the results of a strip stay in a buffer of its own until all of it has been
// read, unless the kernel never comes back to what it has written.
BoolResult Convolution3dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                  boost::shared_ptr<core::BaseActionProvider>& provider) {
  const auto kernel = getStorage<attr::InKnlXYZ>();
  const image::StripMargins margins = kernelMargins(*kernel);
  if (tryToLaunchGpuProcess(priority, provider)) return true;
  using Next = Convolution3dImgLvl3;
  using image::eStripAllocationType;
  const auto inPlace = runsInPlace(*kernel) ? eStripAllocationType::View : eStripAllocationType::OwnBuffer;
  const auto weights = processor::dynamicNoSplit<Next, attr::InKnlXYZ>(kernel);
  const auto normalize = processor::dynamicNoSplit<Next, attr::InNormalize>(getStorage<attr::InNormalize>());
  const auto border =
      processor::dynamicNoSplit<Next, attr::InConvolBorder3d>(getStorage<attr::InConvolBorder3d>());
  const bool alongZ =
      std::max({margins.before[0], margins.after[0], margins.before[1], margins.after[1]}) == 0;
  if (alongZ)
    provider = dispatchWindowStrips<Next, attr::InSubImg3d, attr::InKnlZStrip3d, attr::OutZStrip3d,
                                    image::eStripParsingDirection::Y>(priority, *this, margins, inPlace,
                                                                      weights, normalize, border);
  else
    provider = dispatchSlices<Next>(priority, *this, margins, inPlace, weights, normalize, border);
  return true;
}

}  // namespace vexo::imaproc::filter
