#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<PearsonColocalization3dImgLvl1, PearsonColocalization3dImgLvl2,
                        PearsonColocalization3dImgLvl3>
    registrator;

using Call =
    processor::CallForms<PearsonColocalization3dImgLvl1, attr::OutRealImg, attr::InImg3d1, attr::InImg3d2>;

}  // namespace

BoolResult PearsonColocalization3dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                            core::ProviderPtr& provider) {
  provider = dispatchVolumes<PearsonColocalization3dImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr pearsonColocalization3dImg(const image::ConstImagePtr& inImg1,
                                           const image::ConstImagePtr& inImg2) {
  return Call::run(inImg1, inImg2);
}
void pearsonColocalization3dImg(const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2,
                                const image::ImagePtr& outRealImg) {
  Call::fill(inImg1, inImg2, outRealImg);
}
boost::shared_ptr<PearsonColocalization3dImgLvl1> pearsonColocalization3dImg_async(
    const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2) {
  return Call::start(inImg1, inImg2);
}
boost::shared_ptr<PearsonColocalization3dImgLvl1> pearsonColocalization3dImg_async(
    const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2,
    const image::ImagePtr& outRealImg) {
  return Call::startFill(inImg1, inImg2, outRealImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<PearsonColocalization3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
