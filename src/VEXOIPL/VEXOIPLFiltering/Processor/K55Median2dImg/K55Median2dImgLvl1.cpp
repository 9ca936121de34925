#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<K55Median2dImgLvl1, K55Median2dImgLvl2, K55Median2dImgLvl3> registrator;

using Call = processor::CallForms<K55Median2dImgLvl1, attr::OutImg, attr::InImg>;

}  // namespace

BoolResult K55Median2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                core::ProviderPtr& provider) {
  provider = dispatchPlanes<K55Median2dImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr k55Median2dImg(const image::ConstImagePtr& inImg) {
  return Call::run(inImg);
}
void k55Median2dImg(const image::ConstImagePtr& inImg, const image::ImagePtr& outImg) {
  Call::fill(inImg, outImg);
}
boost::shared_ptr<K55Median2dImgLvl1> k55Median2dImg_async(const image::ConstImagePtr& inImg) {
  return Call::start(inImg);
}
boost::shared_ptr<K55Median2dImgLvl1> k55Median2dImg_async(const image::ConstImagePtr& inImg,
                                                           const image::ImagePtr& outImg) {
  return Call::startFill(inImg, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<K55Median2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
