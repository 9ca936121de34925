#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl1.h"

#include "VEXOIPL/VEXOIPLLogical/MaskRule.h"
#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::logic {
namespace {

const FilterRegistrator<MaskImgImgLvl1, MaskImgImgLvl2, MaskImgImgLvl3, MaskImgImg3dLvl3> registrator;

using Call = processor::CallForms<MaskImgImgLvl1, attr::OutImg, attr::InImg1, attr::InImg2, attr::InMaskImg>;

}  // namespace

processor::RulePtr MaskImgImgLvl1::createRule() const {
  return matchSize(accessAttribute<attr::InImg1>(), accessAttribute<attr::InImg2>()) &&
         matchMask(accessAttribute<attr::InImg1>(), accessAttribute<attr::InMaskImg>()) &&
         matchSize(accessAttribute<attr::InImg1>(), accessAttribute<attr::OutImg>());
}

BoolResult MaskImgImgLvl1::retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) {
  provider = dispatchPlanes<MaskImgImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr maskImgImg(const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2,
                           const image::ConstImagePtr& inMaskImg) {
  return Call::run(inImg1, inImg2, inMaskImg);
}
void maskImgImg(const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2,
                const image::ConstImagePtr& inMaskImg, const image::ImagePtr& outImg) {
  Call::fill(inImg1, inImg2, inMaskImg, outImg);
}
boost::shared_ptr<MaskImgImgLvl1> maskImgImg_async(const image::ConstImagePtr& inImg1,
                                                   const image::ConstImagePtr& inImg2,
                                                   const image::ConstImagePtr& inMaskImg) {
  return Call::start(inImg1, inImg2, inMaskImg);
}
boost::shared_ptr<MaskImgImgLvl1> maskImgImg_async(const image::ConstImagePtr& inImg1,
                                                   const image::ConstImagePtr& inImg2,
                                                   const image::ConstImagePtr& inMaskImg,
                                                   const image::ImagePtr& outImg) {
  return Call::startFill(inImg1, inImg2, inMaskImg, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<MaskImgImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::logic
