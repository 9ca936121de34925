#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl2.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl3.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GenericMedian3dImgLvl2> registrator;

}  // namespace

processor::RulePtr GenericMedian3dImgLvl2::createRule() const {
  return matchSize(accessAttribute<attr::InSubImg3d>(), accessAttribute<attr::OutImg>());
}

// In place, the margins of each strip are saved before the first strip starts, and the results of a strip
// stay in a buffer of its own until all of it has been read.
BoolResult GenericMedian3dImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = GenericMedian3dImgLvl3;
  const auto allocation = isInSitu(accessAttribute<attr::InSubImg3d>(), accessAttribute<attr::OutImg>())
                              ? image::eStripAllocationType::OwnBuffer
                              : image::eStripAllocationType::View;
  provider = processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageZStrip3dWithKernelSplit<Next, const image::BaseImage, attr::InKnlZStrip3d>>(
          getStorage<attr::InSubImg3d>(), allocation,
          centredMargins(getStorage<attr::InHalfKnlSizeX>(), getStorage<attr::InHalfKnlSizeY>(),
                         getStorage<attr::InHalfKnlSizeZ>())),
      boost::make_shared<ImageZStrip3dSplit<Next, image::BaseImage, attr::OutZStrip3d>>(
          getStorage<attr::OutImg>(), allocation));
  return true;
}

}  // namespace vexo::imaproc::filter
