#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<K33Median2dImgLvl1, K33Median2dImgLvl2, K33Median2dImgLvl3> registrator;

using Call = processor::CallForms<K33Median2dImgLvl1, attr::OutImg, attr::InImg>;

}  // namespace

BoolResult K33Median2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                core::ProviderPtr& provider) {
  provider = dispatchPlanes<K33Median2dImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr k33Median2dImg(const image::ConstImagePtr& inImg) {
  return Call::run(inImg);
}
void k33Median2dImg(const image::ConstImagePtr& inImg, const image::ImagePtr& outImg) {
  Call::fill(inImg, outImg);
}
boost::shared_ptr<K33Median2dImgLvl1> k33Median2dImg_async(const image::ConstImagePtr& inImg) {
  return Call::start(inImg);
}
boost::shared_ptr<K33Median2dImgLvl1> k33Median2dImg_async(const image::ConstImagePtr& inImg,
                                                           const image::ImagePtr& outImg) {
  return Call::startFill(inImg, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<K33Median2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
