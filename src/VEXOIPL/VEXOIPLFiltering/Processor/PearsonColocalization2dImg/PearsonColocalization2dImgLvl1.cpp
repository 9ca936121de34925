#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<PearsonColocalization2dImgLvl1, PearsonColocalization2dImgLvl2,
                        PearsonColocalization2dImgLvl3>
    registrator;

using Call =
    processor::CallForms<PearsonColocalization2dImgLvl1, attr::OutRealImg, attr::InImg1, attr::InImg2>;

}  // namespace

BoolResult PearsonColocalization2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                            core::ProviderPtr& provider) {
  provider = dispatchPlanes<PearsonColocalization2dImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr pearsonColocalization2dImg(const image::ConstImagePtr& inImg1,
                                           const image::ConstImagePtr& inImg2) {
  return Call::run(inImg1, inImg2);
}
void pearsonColocalization2dImg(const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2,
                                const image::ImagePtr& outRealImg) {
  Call::fill(inImg1, inImg2, outRealImg);
}
boost::shared_ptr<PearsonColocalization2dImgLvl1> pearsonColocalization2dImg_async(
    const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2) {
  return Call::start(inImg1, inImg2);
}
boost::shared_ptr<PearsonColocalization2dImgLvl1> pearsonColocalization2dImg_async(
    const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2,
    const image::ImagePtr& outRealImg) {
  return Call::startFill(inImg1, inImg2, outRealImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<PearsonColocalization2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
