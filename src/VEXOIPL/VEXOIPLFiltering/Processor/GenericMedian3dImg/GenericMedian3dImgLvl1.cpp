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

void GenericMedian3dImgLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutImg"] = duplicateInOut<attr::InImg3d, attr::OutImg>(accessAttribute<attr::OutImg>(),
                                                                       accessAttribute<attr::InImg3d>());
}

processor::RulePtr GenericMedian3dImgLvl1::createRule() const {
  return matchSize(accessAttribute<attr::InImg3d>(), accessAttribute<attr::OutImg>());
}

BoolResult GenericMedian3dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = GenericMedian3dImgLvl2;
  provider = processor::dispatchPieces<Next>(
      priority, volumeSplit<Next, attr::InSubImg3d>(getStorage<attr::InImg3d>()),
      volumeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeX>(getStorage<attr::InHalfKnlSizeX>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeY>(getStorage<attr::InHalfKnlSizeY>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeZ>(getStorage<attr::InHalfKnlSizeZ>()));
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
