#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl2.h"

#include "VEXOCore/Gpu.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgGpuLvl3.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl3.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

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

// In place, the margins of each strip are saved before the first strip starts, and the results of a strip
// stay in a buffer of its own until all of it has been read; but a kernel along X reads each row just before
// it writes over it.
BoolResult Convolution3dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                  boost::shared_ptr<core::BaseActionProvider>& provider) {
  const image::StripMargins margins = kernelMargins(*getStorage<attr::InKnlXYZ>());
  if (tryToLaunchGpuProcess(priority, provider)) return true;
  using Next = Convolution3dImgLvl3;
  using image::eStripAllocationType;
  const bool inSitu = isInSitu(accessAttribute<attr::InSubImg3d>(), accessAttribute<attr::OutImg>());
  const bool alongX =
      std::max({margins.before[1], margins.after[1], margins.before[2], margins.after[2]}) == 0;
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageZStrip3dWithKernelSplit<Next, const image::BaseImage, attr::InKnlZStrip3d>>(
          getStorage<attr::InSubImg3d>(),
          inSitu ? eStripAllocationType::OwnBuffer : eStripAllocationType::View, margins),
      boost::make_shared<ImageZStrip3dSplit<Next, image::BaseImage, attr::OutZStrip3d>>(
          getStorage<attr::OutImg>(),
          inSitu && !alongX ? eStripAllocationType::OwnBuffer : eStripAllocationType::View),
      processor::dynamicNoSplit<Next, attr::InKnlXYZ>(getStorage<attr::InKnlXYZ>()),
      processor::dynamicNoSplit<Next, attr::InNormalize>(getStorage<attr::InNormalize>()),
      processor::dynamicNoSplit<Next, attr::InConvolBorder3d>(getStorage<attr::InConvolBorder3d>()));
  return true;
}

}  // namespace vexo::imaproc::filter
