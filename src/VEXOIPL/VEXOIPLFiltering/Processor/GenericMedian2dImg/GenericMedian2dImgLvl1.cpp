#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<GenericMedian2dImgLvl1> registrator;

}  // namespace

void GenericMedian2dImgLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutImg"] = duplicateInOut<attr::InImg, attr::OutImg>(accessAttribute<attr::OutImg>(),
                                                                     accessAttribute<attr::InImg>());
}

processor::RulePtr GenericMedian2dImgLvl1::createRule() const {
  return matchSize(accessAttribute<attr::InImg>(), accessAttribute<attr::OutImg>());
}

BoolResult GenericMedian2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = GenericMedian2dImgLvl2;
  provider = processor::dispatchPieces<Next>(
      priority, planeSplit<Next, attr::InSubImg2d>(getStorage<attr::InImg>()),
      planeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeX>(getStorage<attr::InHalfKnlSizeX>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeY>(getStorage<attr::InHalfKnlSizeY>()));
  return true;
}

namespace {

using Call = processor::CallForms<GenericMedian2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY>;

}  // namespace

boost::shared_ptr<image::BaseImage> genericMedian2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                       std::uint32_t inHalfKnlSizeX,
                                                       std::uint32_t inHalfKnlSizeY) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

void genericMedian2dImg(const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<GenericMedian2dImgLvl1> genericMedian2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

boost::shared_ptr<GenericMedian2dImgLvl1> genericMedian2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<GenericMedian2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
