#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<GenericMedian2dImgLvl1, GenericMedian2dImgLvl2, GenericMedian2dImgLvl3> registrator;

using Call = processor::CallForms<GenericMedian2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY>;

}  // namespace

BoolResult GenericMedian2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    core::ProviderPtr& provider) {
  provider = dispatchPlanes<GenericMedian2dImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr genericMedian2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                   std::uint32_t inHalfKnlSizeY) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}
void genericMedian2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY, const image::ImagePtr& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}
boost::shared_ptr<GenericMedian2dImgLvl1> genericMedian2dImg_async(const image::ConstImagePtr& inImg,
                                                                   std::uint32_t inHalfKnlSizeX,
                                                                   std::uint32_t inHalfKnlSizeY) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}
boost::shared_ptr<GenericMedian2dImgLvl1> genericMedian2dImg_async(const image::ConstImagePtr& inImg,
                                                                   std::uint32_t inHalfKnlSizeX,
                                                                   std::uint32_t inHalfKnlSizeY,
                                                                   const image::ImagePtr& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<GenericMedian2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
