#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

// Makes the class known by name while the library is loaded; each level has such a line.
const processor::ProcessorRegistrator<MeanSmoothing2dImgLvl1> registrator;

}  // namespace

// How an output that the caller did not give is made.
void MeanSmoothing2dImgLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutImg"] = duplicateInOut<attr::InImg, attr::OutImg>(accessAttribute<attr::OutImg>(),
                                                                     accessAttribute<attr::InImg>());
}

// What must hold before a run, besides what the frame checks for every processor (mandatory inputs, overlap).
processor::RulePtr MeanSmoothing2dImgLvl1::createRule() const {
  return matchSize(accessAttribute<attr::InImg>(), accessAttribute<attr::OutImg>());
}

// The choice of implementation; here there is one. Each plane is a piece, the half sizes go to all of them.
BoolResult MeanSmoothing2dImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                    boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = MeanSmoothing2dImgLvl2;
  provider = processor::dispatchPieces<Next>(
      priority, planeSplit<Next, attr::InSubImg2d>(getStorage<attr::InImg>()),
      planeSplit<Next, attr::OutImg>(getStorage<attr::OutImg>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeX>(getStorage<attr::InHalfKnlSizeX>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeY>(getStorage<attr::InHalfKnlSizeY>()));
  return true;
}

boost::shared_ptr<image::BaseImage> meanSmoothing2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                       std::uint32_t inHalfKnlSizeX,
                                                       std::uint32_t inHalfKnlSizeY) {
  return processor::runCall<MeanSmoothing2dImgLvl1, attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY>(
             inImg, inHalfKnlSizeX, inHalfKnlSizeY)
      ->getStorage<attr::OutImg>();
}

void meanSmoothing2dImg(const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
                        std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  processor::runCall<MeanSmoothing2dImgLvl1, attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                     attr::OutImg>(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<MeanSmoothing2dImgLvl1> meanSmoothing2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY) {
  return processor::startCall<MeanSmoothing2dImgLvl1, attr::InImg, attr::InHalfKnlSizeX,
                              attr::InHalfKnlSizeY>(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

boost::shared_ptr<MeanSmoothing2dImgLvl1> meanSmoothing2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  return processor::startCall<MeanSmoothing2dImgLvl1, attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                              attr::OutImg>(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<MeanSmoothing2dImgLvl1>& processor) {
  return processor::awaitOutput<attr::OutImg>(processor);
}

}  // namespace vexo::imaproc::filter
