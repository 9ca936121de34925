#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<HistoO1MedianXStrip2dImgLvl1> registrator;

using Call = processor::CallForms<HistoO1MedianXStrip2dImgLvl1, attr::OutImg, attr::InImg,
                                  attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::InInputRange>;

}  // namespace

BoolResult HistoO1MedianXStrip2dImgLvl1::retrieveProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = dispatchPlanes<HistoO1MedianXStrip2dImgLvl2, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                            attr::InInputRange>(priority, *this, getStorage<attr::InImg>());
  return true;
}

boost::shared_ptr<image::BaseImage> histoO1MedianXStrip2dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange);
}

void histoO1MedianXStrip2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                              std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                              const boost::shared_ptr<const attr::Range>& inInputRange,
                              const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange, outImg);
}

boost::shared_ptr<HistoO1MedianXStrip2dImgLvl1> histoO1MedianXStrip2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange);
}

boost::shared_ptr<HistoO1MedianXStrip2dImgLvl1> histoO1MedianXStrip2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<const attr::Range>& inInputRange,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<HistoO1MedianXStrip2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
