#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<HistoMedian3dImgLvl1> registrator;

using Call = processor::CallForms<HistoMedian3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ, attr::InInputRange>;

}  // namespace

BoolResult HistoMedian3dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                  boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider =
      dispatchVolumes<HistoMedian3dImgLvl2, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ,
                      attr::InInputRange>(priority, *this, getStorage<attr::InImg3d>());
  return true;
}

boost::shared_ptr<image::BaseImage> histoMedian3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, inInputRange);
}

void histoMedian3dImg(const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
                      std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                      const boost::shared_ptr<const attr::Range>& inInputRange,
                      const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, inInputRange, outImg);
}

boost::shared_ptr<HistoMedian3dImgLvl1> histoMedian3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const boost::shared_ptr<const attr::Range>& inInputRange) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, inInputRange);
}

boost::shared_ptr<HistoMedian3dImgLvl1> histoMedian3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const boost::shared_ptr<const attr::Range>& inInputRange,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, inInputRange, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<HistoMedian3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
