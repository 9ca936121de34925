#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl2.h"

#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl3.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::logic {
namespace {

const processor::ProcessorRegistrator<MaskImgImgLvl2> registrator;

template <class A>
using InSplit = ImageYStrip2dSplit<MaskImgImgLvl3, const image::BaseImage, A>;

}  // namespace

// Without margins no strip reads what another writes: in place needs no copies.
BoolResult MaskImgImgLvl2::retrieveProvider(const core::BasePriority& priority,
                                            boost::shared_ptr<core::BaseActionProvider>& provider) {
  constexpr auto view = image::eStripAllocationType::View;
  provider = processor::dispatchStrips<MaskImgImgLvl3>(
      priority, boost::make_shared<InSplit<attr::InYStrip2d1>>(getStorage<attr::InImg1>(), view),
      boost::make_shared<InSplit<attr::InYStrip2d2>>(getStorage<attr::InImg2>(), view),
      boost::make_shared<InSplit<attr::InMaskYStrip2d>>(getStorage<attr::InMaskImg>(), view),
      boost::make_shared<ImageYStrip2dSplit<MaskImgImgLvl3, image::BaseImage, attr::OutYStrip2d>>(
          getStorage<attr::OutImg>(), view));
  return true;
}

}  // namespace vexo::imaproc::logic
