#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl3.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<K33Median2dImgLvl2> registrator;

}  // namespace

processor::RulePtr K33Median2dImgLvl2::createRule() const {
  return matchSize(accessAttribute<attr::InSubImg2d>(), accessAttribute<attr::OutImg>());
}

// In place, the margins of each strip are saved before the first strip starts. The output needs no buffer of
// its own: the kernel loads every row of its strip before it writes over it.
BoolResult K33Median2dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = K33Median2dImgLvl3;
  const auto allocation = isInSitu(accessAttribute<attr::InSubImg2d>(), accessAttribute<attr::OutImg>())
                              ? image::eStripAllocationType::OwnBuffer
                              : image::eStripAllocationType::View;
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageYStrip2dWithKernelSplit<Next, const image::BaseImage, attr::InKnlYStrip2d>>(
          getStorage<attr::InSubImg2d>(), allocation, centredMargins(1, 1)),
      boost::make_shared<ImageYStrip2dSplit<Next, image::BaseImage, attr::OutYStrip2d>>(
          getStorage<attr::OutImg>(), image::eStripAllocationType::View));
  return true;
}

}  // namespace vexo::imaproc::filter
