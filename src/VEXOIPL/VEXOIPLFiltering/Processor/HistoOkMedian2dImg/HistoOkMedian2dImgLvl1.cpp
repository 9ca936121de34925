#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/HistoOkMedian2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/HistoOkMedian2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<HistoOkMedian2dImgLvl1> registrator;

using Call = processor::CallForms<HistoOkMedian2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InInputRange>;

}  // namespace

BoolResult HistoOkMedian2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider =
      dispatchPlanes<HistoOkMedian2dImgLvl2, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::InInputRange>(
          priority, *this, getStorage<attr::InImg>());
  return true;
}

boost::shared_ptr<image::BaseImage> histoOkMedian2dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange);
}

void histoOkMedian2dImg(const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY,
                        const boost::shared_ptr<const attr::Range>& inInputRange,
                        const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange, outImg);
}

boost::shared_ptr<HistoOkMedian2dImgLvl1> histoOkMedian2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange);
}

boost::shared_ptr<HistoOkMedian2dImgLvl1> histoOkMedian2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<const attr::Range>& inInputRange,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<HistoOkMedian2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
