#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GenericMedian2dImgLvl1> registrator;

}  // namespace

BoolResult GenericMedian2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = dispatchPlanes<GenericMedian2dImgLvl2, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY>(
      priority, *this, getStorage<attr::InImg>());
  return true;
}

namespace {

using Call = processor::CallForms<GenericMedian2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY>;

}  // namespace

boost::shared_ptr<image::BaseImage> genericMedian2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                       std::uint32_t inHalfKnlSizeX,
                                                       std::uint32_t inHalfKnlSizeY) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

void genericMedian2dImg(const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<GenericMedian2dImgLvl1> genericMedian2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

boost::shared_ptr<GenericMedian2dImgLvl1> genericMedian2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<GenericMedian2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
