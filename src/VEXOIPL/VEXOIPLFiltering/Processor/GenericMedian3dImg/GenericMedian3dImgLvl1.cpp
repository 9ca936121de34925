#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<GenericMedian3dImgLvl1, GenericMedian3dImgLvl2, GenericMedian3dImgLvl3> registrator;

using Call = processor::CallForms<GenericMedian3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ>;

}  // namespace

BoolResult GenericMedian3dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    core::ProviderPtr& provider) {
  provider = dispatchVolumes<GenericMedian3dImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr genericMedian3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                   std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}
void genericMedian3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                        const image::ImagePtr& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}
boost::shared_ptr<GenericMedian3dImgLvl1> genericMedian3dImg_async(const image::ConstImagePtr& inImg,
                                                                   std::uint32_t inHalfKnlSizeX,
                                                                   std::uint32_t inHalfKnlSizeY,
                                                                   std::uint32_t inHalfKnlSizeZ) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}
boost::shared_ptr<GenericMedian3dImgLvl1> genericMedian3dImg_async(const image::ConstImagePtr& inImg,
                                                                   std::uint32_t inHalfKnlSizeX,
                                                                   std::uint32_t inHalfKnlSizeY,
                                                                   std::uint32_t inHalfKnlSizeZ,
                                                                   const image::ImagePtr& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<GenericMedian3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
