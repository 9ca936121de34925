#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl2.h"

#include "VEXOCore/Gpu.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgGpuLvl3.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl3.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOProcessing/WindowStrips.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Convolution2dImgLvl2> registrator;

}  // namespace

bool Convolution2dImgLvl2::tryToLaunchGpuProcess(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) const {
  const auto input = getStorage<attr::InSubImg2d>();
  if (!core::isGpuSupportActivated() || !input->isGpuImage()) return false;
  using Next = Convolution2dImgGpuLvl3;
  constexpr auto pieces = eSubImageSplitType::Plane2d;
  provider = processor::dispatchPieces<Next>(
      priority, boost::make_shared<CudaSubImageSplit<Next, attr::InSubGpuImg>>(input, pieces),
      boost::make_shared<CudaSubImageSplit<Next, attr::OutImg>>(getStorage<attr::OutImg>(), pieces),
      processor::staticNoSplit<Next, attr::InKnlXY>(getStorage<attr::InKnlXY>()),
      processor::staticNoSplit<Next, attr::InNormalize>(getStorage<attr::InNormalize>()),
      processor::staticNoSplit<Next, attr::InConvolBorder2d>(getStorage<attr::InConvolBorder2d>()));
  return true;
}

// In place, the results of a strip stay in a buffer of its own until all of it has been read, unless the
// kernel never comes back to what it has written.
BoolResult Convolution2dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                  boost::shared_ptr<core::BaseActionProvider>& provider) {
  const auto kernel = getStorage<attr::InKnlXY>();
  const image::StripMargins margins = kernelMargins(*kernel);
  if (tryToLaunchGpuProcess(priority, provider)) return true;
  using Next = Convolution2dImgLvl3;
  using image::eStripAllocationType;
  provider = dispatchRows<Next>(
      priority, *this, margins,
      runsInPlace(*kernel) ? eStripAllocationType::View : eStripAllocationType::OwnBuffer,
      processor::dynamicNoSplit<Next, attr::InKnlXY>(kernel),
      processor::dynamicNoSplit<Next, attr::InNormalize>(getStorage<attr::InNormalize>()),
      processor::dynamicNoSplit<Next, attr::InConvolBorder2d>(getStorage<attr::InConvolBorder2d>()));
  return true;
}

}  // namespace vexo::imaproc::filter
