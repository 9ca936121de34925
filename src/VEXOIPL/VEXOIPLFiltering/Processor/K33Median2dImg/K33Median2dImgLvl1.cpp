#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<K33Median2dImgLvl1> registrator;

}  // namespace

BoolResult K33Median2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = dispatchPlanes<K33Median2dImgLvl2>(priority, *this, getStorage<attr::InImg>());
  return true;
}

namespace {

using Call = processor::CallForms<K33Median2dImgLvl1, attr::OutImg, attr::InImg>;

}  // namespace

boost::shared_ptr<image::BaseImage> k33Median2dImg(const boost::shared_ptr<const image::BaseImage>& inImg) {
  return Call::run(inImg);
}

void k33Median2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                    const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, outImg);
}

boost::shared_ptr<K33Median2dImgLvl1> k33Median2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg) {
  return Call::start(inImg);
}

boost::shared_ptr<K33Median2dImgLvl1> k33Median2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<K33Median2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
