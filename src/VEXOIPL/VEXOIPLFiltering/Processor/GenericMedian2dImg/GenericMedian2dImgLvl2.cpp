#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl3.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GenericMedian2dImgLvl2> registrator;

}  // namespace

processor::RulePtr GenericMedian2dImgLvl2::createRule() const {
  return matchSize(accessAttribute<attr::InSubImg2d>(), accessAttribute<attr::OutImg>());
}

// In place, the margins of each strip are saved before the first strip starts, and the results of a strip
// stay in a buffer of its own until all of it has been read.
BoolResult GenericMedian2dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = GenericMedian2dImgLvl3;
  const auto allocation = isInSitu(accessAttribute<attr::InSubImg2d>(), accessAttribute<attr::OutImg>())
                              ? image::eStripAllocationType::OwnBuffer
                              : image::eStripAllocationType::View;
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageYStrip2dWithKernelSplit<Next, const image::BaseImage, attr::InKnlYStrip2d>>(
          getStorage<attr::InSubImg2d>(), allocation,
          centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>())),
      boost::make_shared<ImageYStrip2dSplit<Next, image::BaseImage, attr::OutYStrip2d>>(
          getStorage<attr::OutImg>(), allocation));
  return true;
}

}  // namespace vexo::imaproc::filter
