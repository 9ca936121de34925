#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<PearsonColocalization3dImgLvl1> registrator;

using Call =
    processor::CallForms<PearsonColocalization3dImgLvl1, attr::OutRealImg, attr::InImg3d1, attr::InImg3d2>;

}  // namespace

void PearsonColocalization3dImgLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutRealImg"] = promoteUnary<attr::InImg3d1, attr::OutRealImg>(
      accessAttribute<attr::OutRealImg>(), accessAttribute<attr::InImg3d1>());
}

processor::RulePtr PearsonColocalization3dImgLvl1::createRule() const {
  return pearsonRule(accessAttribute<attr::InImg3d1>(), accessAttribute<attr::InImg3d2>(),
                     accessAttribute<attr::OutRealImg>());
}

BoolResult PearsonColocalization3dImgLvl1::retrieveProvider(
    const core::BasePriority& priority, boost::shared_ptr<core::BaseActionProvider>& provider) {
  using Next = PearsonColocalization3dImgLvl2;
  provider = processor::dispatchPieces<Next>(
      priority, volumeSplit<Next, attr::InSubImg3d1>(getStorage<attr::InImg3d1>()),
      volumeSplit<Next, attr::InSubImg3d2>(getStorage<attr::InImg3d2>()),
      volumeSplit<Next, attr::OutRealImg>(getStorage<attr::OutRealImg>()));
  return true;
}

boost::shared_ptr<image::BaseImage> pearsonColocalization3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2) {
  return Call::run(inImg1, inImg2);
}

void pearsonColocalization3dImg(const boost::shared_ptr<const image::BaseImage>& inImg1,
                                const boost::shared_ptr<const image::BaseImage>& inImg2,
                                const boost::shared_ptr<image::BaseImage>& outRealImg) {
  Call::fill(inImg1, inImg2, outRealImg);
}

boost::shared_ptr<PearsonColocalization3dImgLvl1> pearsonColocalization3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2) {
  return Call::start(inImg1, inImg2);
}

boost::shared_ptr<PearsonColocalization3dImgLvl1> pearsonColocalization3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2,
    const boost::shared_ptr<image::BaseImage>& outRealImg) {
  return Call::startFill(inImg1, inImg2, outRealImg);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<PearsonColocalization3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
