#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/HistoOkMedian2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/HistoOkMedian2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<HistoOkMedian2dImgLvl1, HistoOkMedian2dImgLvl2, HistoOkMedian2dImgLvl3> registrator;

using Call = processor::CallForms<HistoOkMedian2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InInputRange>;

}  // namespace

BoolResult HistoOkMedian2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    core::ProviderPtr& provider) {
  provider = dispatchPlanes<HistoOkMedian2dImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr histoOkMedian2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                   std::uint32_t inHalfKnlSizeY,
                                   const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange);
}
void histoOkMedian2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY,
                        const boost::shared_ptr<const attr::Range>& inInputRange,
                        const image::ImagePtr& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange, outImg);
}
boost::shared_ptr<HistoOkMedian2dImgLvl1> histoOkMedian2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange);
}
boost::shared_ptr<HistoOkMedian2dImgLvl1> histoOkMedian2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    const boost::shared_ptr<const attr::Range>& inInputRange, const image::ImagePtr& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inInputRange, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<HistoOkMedian2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
