#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<DespeckleFilter2dImgLvl1, DespeckleFilter2dImgLvl2, DespeckleFilter2dImgLvl3>
    registrator;

using Call = processor::CallForms<DespeckleFilter2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InFactor>;

}  // namespace

processor::RulePtr DespeckleFilter2dImgLvl1::createRule() const {
  return matchSizeAndType(accessAttribute<attr::InImg>(), accessAttribute<attr::OutImg>());
}

BoolResult DespeckleFilter2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                      core::ProviderPtr& provider) {
  provider = dispatchPlanes<DespeckleFilter2dImgLvl2>(priority, *this);
  return true;
}

// In place the kernel keeps whole rows of its window, in double precision. Where that would be much memory,
// results wait in a buffer of their strip instead.
StripCut DespeckleFilter2dImgLvl2::getCut() const {
  using image::eStripAllocationType;
  constexpr std::size_t largestWindow = 256 * 1024;  // samples
  const std::size_t rows = 2 * std::size_t(getStorage<attr::InHalfKnlSizeY>()) + 1;
  const bool large = getStorage<attr::InSubImg2d>()->getSizeX() > largestWindow / rows;
  return {windowMargins(*this), large ? eStripAllocationType::OwnBuffer : eStripAllocationType::View};
}

image::ImagePtr despeckleFilter2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                     std::uint32_t inHalfKnlSizeY, double inFactor) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inFactor);
}
void despeckleFilter2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                          std::uint32_t inHalfKnlSizeY, double inFactor, const image::ImagePtr& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inFactor, outImg);
}
boost::shared_ptr<DespeckleFilter2dImgLvl1> despeckleFilter2dImg_async(const image::ConstImagePtr& inImg,
                                                                       std::uint32_t inHalfKnlSizeX,
                                                                       std::uint32_t inHalfKnlSizeY,
                                                                       double inFactor) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inFactor);
}
boost::shared_ptr<DespeckleFilter2dImgLvl1> despeckleFilter2dImg_async(const image::ConstImagePtr& inImg,
                                                                       std::uint32_t inHalfKnlSizeX,
                                                                       std::uint32_t inHalfKnlSizeY,
                                                                       double inFactor,
                                                                       const image::ImagePtr& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inFactor, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<DespeckleFilter2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
