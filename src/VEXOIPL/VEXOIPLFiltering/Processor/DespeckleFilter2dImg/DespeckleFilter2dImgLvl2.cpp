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

BoolResult DespeckleFilter2dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                      boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = DespeckleFilter2dImgLvl3;
  const auto allocation = isInSitu(accessAttribute<attr::InSubImg2d>(), accessAttribute<attr::OutImg>())
                              ? image::eStripAllocationType::OwnBuffer
                              : image::eStripAllocationType::View;
  const image::StripMargins margins =
      centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>());
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageYStrip2dWithKernelSplit<Next, const image::BaseImage, attr::InKnlYStrip2d>>(
          getStorage<attr::InSubImg2d>(), allocation, margins),
      boost::make_shared<ImageYStrip2dSplit<Next, image::BaseImage, attr::OutYStrip2d>>(
          getStorage<attr::OutImg>(), image::eStripAllocationType::View),
      processor::dynamicNoSplit<Next, attr::InFactor>(getStorage<attr::InFactor>()));
  return true;
}

}  // namespace vexo::imaproc::filter
