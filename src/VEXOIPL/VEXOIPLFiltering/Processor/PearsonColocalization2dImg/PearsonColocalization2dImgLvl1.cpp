#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<PearsonColocalization2dImgLvl1> registrator;

using Call =
    processor::CallForms<PearsonColocalization2dImgLvl1, attr::OutRealImg, attr::InImg1, attr::InImg2>;

}  // namespace

void PearsonColocalization2dImgLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutRealImg"] = promoteUnary<attr::InImg1, attr::OutRealImg>(
      accessAttribute<attr::OutRealImg>(), accessAttribute<attr::InImg1>());
}

processor::RulePtr PearsonColocalization2dImgLvl1::createRule() const {
  return pearsonRule(accessAttribute<attr::InImg1>(), accessAttribute<attr::InImg2>(),
                     accessAttribute<attr::OutRealImg>());
}

BoolResult PearsonColocalization2dImgLvl1::retrieveProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = PearsonColocalization2dImgLvl2;
  provider = processor::dispatchPieces<Next>(
      priority, planeSplit<Next, attr::InSubImg2d1>(getStorage<attr::InImg1>()),
      planeSplit<Next, attr::InSubImg2d2>(getStorage<attr::InImg2>()),
      planeSplit<Next, attr::OutRealImg>(getStorage<attr::OutRealImg>()));
  return true;
}

boost::shared_ptr<image::BaseImage> pearsonColocalization2dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2) {
  return Call::run(inImg1, inImg2);
}

void pearsonColocalization2dImg(const boost::shared_ptr<const image::BaseImage>& inImg1,
                                const boost::shared_ptr<const image::BaseImage>& inImg2,
                                const boost::shared_ptr<image::BaseImage>& outRealImg) {
  Call::fill(inImg1, inImg2, outRealImg);
}

boost::shared_ptr<PearsonColocalization2dImgLvl1> pearsonColocalization2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2) {
  return Call::start(inImg1, inImg2);
}

boost::shared_ptr<PearsonColocalization2dImgLvl1> pearsonColocalization2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2,
    const boost::shared_ptr<image::BaseImage>& outRealImg) {
  return Call::startFill(inImg1, inImg2, outRealImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<PearsonColocalization2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
