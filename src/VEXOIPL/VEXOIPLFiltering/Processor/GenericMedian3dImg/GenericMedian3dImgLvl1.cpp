#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GenericMedian3dImgLvl1> registrator;

}  // namespace

BoolResult GenericMedian3dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider = dispatchVolumes<GenericMedian3dImgLvl2, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                             attr::InHalfKnlSizeZ>(priority, *this, getStorage<attr::InImg3d>());
  return true;
}

namespace {

using Call = processor::CallForms<GenericMedian3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ>;

}  // namespace

boost::shared_ptr<image::BaseImage> genericMedian3dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                       std::uint32_t inHalfKnlSizeX,
                                                       std::uint32_t inHalfKnlSizeY,
                                                       std::uint32_t inHalfKnlSizeZ) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}

void genericMedian3dImg(const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                        const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}

boost::shared_ptr<GenericMedian3dImgLvl1> genericMedian3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}

boost::shared_ptr<GenericMedian3dImgLvl1> genericMedian3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<GenericMedian3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
