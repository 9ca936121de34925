#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<HistoO1MedianXStrip2dImgLvl1, HistoO1MedianXStrip2dImgLvl2,
                        HistoO1MedianXStrip2dImgLvl3>
    registrator;

using Call = processor::CallForms<HistoO1MedianXStrip2dImgLvl1, attr::OutImg, attr::InImg,
                                  attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::InInputRange>;

}  // namespace

BoolResult HistoO1MedianXStrip2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                          core::ProviderPtr& provider) {
  provider = dispatchPlanes<HistoO1MedianXStrip2dImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr histoO1MedianXStrip2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                         std::uint32_t inHalfKnlSizeY,
                                         const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange);
}
void histoO1MedianXStrip2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                              std::uint32_t inHalfKnlSizeY,
                              const boost::shared_ptr<const attr::Range>& inInputRange,
                              const image::ImagePtr& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange, outImg);
}
boost::shared_ptr<HistoO1MedianXStrip2dImgLvl1> histoO1MedianXStrip2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange);
}
boost::shared_ptr<HistoO1MedianXStrip2dImgLvl1> histoO1MedianXStrip2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    const boost::shared_ptr<const attr::Range>& inInputRange, const image::ImagePtr& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<HistoO1MedianXStrip2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
