#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl3.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

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
  const auto image = getStorage<attr::InSubImg2d>();
  const bool inSitu = isInSitu(accessAttribute<attr::InSubImg2d>(), accessAttribute<attr::OutImg>());
  const bool large = image->getSizeX() > largestWindow / (2 * getStorage<attr::InHalfKnlSizeY>() + 1);
  const auto readFrom = inSitu ? eStripAllocationType::OwnBuffer : eStripAllocationType::View;
  const auto writeTo = inSitu && large ? eStripAllocationType::OwnBuffer : eStripAllocationType::View;
  const image::StripMargins margins =
      centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>());
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageYStrip2dWithKernelSplit<Next, const image::BaseImage, attr::InKnlYStrip2d>>(
          image, readFrom, margins),
      boost::make_shared<ImageYStrip2dSplit<Next, image::BaseImage, attr::OutYStrip2d>>(
          getStorage<attr::OutImg>(), writeTo),
      processor::dynamicNoSplit<Next, attr::InFactor>(getStorage<attr::InFactor>()));
  return true;
}

}  // namespace vexo::imaproc::filter
