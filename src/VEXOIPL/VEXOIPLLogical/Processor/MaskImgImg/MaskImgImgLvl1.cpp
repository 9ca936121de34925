#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl1.h"

#include "VEXOIPL/VEXOIPLLogical/MaskRule.h"
#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::logic {
namespace {

const processor::ProcessorRegistrator<MaskImgImgLvl1> registrator;

}  // namespace

void MaskImgImgLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutImg"] = duplicateInOut<attr::InImg1, attr::OutImg>(accessAttribute<attr::OutImg>(),
                                                                      accessAttribute<attr::InImg1>());
}

processor::RulePtr MaskImgImgLvl1::createRule() const {
  return matchSize(accessAttribute<attr::InImg1>(), accessAttribute<attr::InImg2>()) &&
         matchMask(accessAttribute<attr::InImg1>(), accessAttribute<attr::InMaskImg>()) &&
         matchSize(accessAttribute<attr::InImg1>(), accessAttribute<attr::OutImg>());
}

BoolResult MaskImgImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                            boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = MaskImgImgLvl2;
  provider =
      processor::dispatchPieces<Next>(priority, planeSplit<Next, attr::InImg1>(getStorage<attr::InImg1>()),
                                      planeSplit<Next, attr::InImg2>(getStorage<attr::InImg2>()),
                                      planeSplit<Next, attr::InMaskImg>(getStorage<attr::InMaskImg>()),
                                      planeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()));
  return true;
}

namespace {

using Call = processor::CallForms<MaskImgImgLvl1, attr::OutImg, attr::InImg1, attr::InImg2, attr::InMaskImg>;

}  // namespace

boost::shared_ptr<image::BaseImage> maskImgImg(const boost::shared_ptr<const image::BaseImage>& inImg1,
                                               const boost::shared_ptr<const image::BaseImage>& inImg2,
                                               const boost::shared_ptr<const image::BaseImage>& inMaskImg) {
  return Call::run(inImg1, inImg2, inMaskImg);
}

void maskImgImg(const boost::shared_ptr<const image::BaseImage>& inImg1,
                const boost::shared_ptr<const image::BaseImage>& inImg2,
                const boost::shared_ptr<const image::BaseImage>& inMaskImg,
                const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg1, inImg2, inMaskImg, outImg);
}

boost::shared_ptr<MaskImgImgLvl1> maskImgImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2,
    const boost::shared_ptr<const image::BaseImage>& inMaskImg) {
  return Call::start(inImg1, inImg2, inMaskImg);
}

boost::shared_ptr<MaskImgImgLvl1> maskImgImg_async(const boost::shared_ptr<const image::BaseImage>& inImg1,
                                                   const boost::shared_ptr<const image::BaseImage>& inImg2,
                                                   const boost::shared_ptr<const image::BaseImage>& inMaskImg,
                                                   const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg1, inImg2, inMaskImg, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<MaskImgImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::logic
