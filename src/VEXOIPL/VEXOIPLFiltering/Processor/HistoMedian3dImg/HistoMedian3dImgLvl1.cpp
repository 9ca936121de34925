#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<HistoMedian3dImgLvl1, HistoMedian3dImgLvl2, HistoMedian3dImgLvl3> registrator;

using Call = processor::CallForms<HistoMedian3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ, attr::InInputRange>;

}  // namespace

BoolResult HistoMedian3dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                  core::ProviderPtr& provider) {
  provider = dispatchVolumes<HistoMedian3dImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr histoMedian3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                 std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                                 const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, inInputRange);
}
void histoMedian3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                      std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                      const boost::shared_ptr<const attr::Range>& inInputRange,
                      const image::ImagePtr& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, inInputRange, outImg);
}
boost::shared_ptr<HistoMedian3dImgLvl1> histoMedian3dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    std::uint32_t inHalfKnlSizeZ, const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, inInputRange);
}
boost::shared_ptr<HistoMedian3dImgLvl1> histoMedian3dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    std::uint32_t inHalfKnlSizeZ, const boost::shared_ptr<const attr::Range>& inInputRange,
    const image::ImagePtr& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, inInputRange, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<HistoMedian3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
