#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<DespeckleFilter2dImgLvl1> registrator;

}  // namespace

processor::RulePtr DespeckleFilter2dImgLvl1::createRule() const {
  return matchSizeAndType(accessAttribute<attr::InImg>(), accessAttribute<attr::OutImg>());
}

BoolResult DespeckleFilter2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                      boost::shared_ptr<core::BaseActionProvider>& provider) {
  provider =
      dispatchPlanes<DespeckleFilter2dImgLvl2, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::InFactor>(
          priority, *this, getStorage<attr::InImg>());
  return true;
}

namespace {

using Call = processor::CallForms<DespeckleFilter2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InFactor>;

}  // namespace

boost::shared_ptr<image::BaseImage> despeckleFilter2dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, double inFactor) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inFactor);
}

void despeckleFilter2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                          std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY, double inFactor,
                          const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inFactor, outImg);
}

boost::shared_ptr<DespeckleFilter2dImgLvl1> despeckleFilter2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, double inFactor) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inFactor);
}

boost::shared_ptr<DespeckleFilter2dImgLvl1> despeckleFilter2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, double inFactor, const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, inFactor, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<DespeckleFilter2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
