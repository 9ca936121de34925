#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"

#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl2.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::glbmsr {
namespace {

const processor::ProcessorRegistrator<StatsMsrLvl1> registrator;

using SumsColl = std::vector<boost::shared_ptr<StatsMsrSums>>;

/// Level 2 over the pieces of the image, each with sums of its own.
template <class Next, class In>
boost::shared_ptr<core::BaseActionProvider> dispatch(const core::BasePriority& priority,
                                                     const boost::shared_ptr<SubImageSplit<Next, In>>& pieces,
                                                     SumsColl& sums) {
  for (std::size_t i = 0; i < pieces->getSubImageCount(); ++i)
    sums.push_back(boost::make_shared<StatsMsrSums>());
  return processor::dispatchPieces<Next>(
      priority, pieces, boost::make_shared<PlanIndexedSplit<Next, attr::OutOptStatsSums>>(sums));
}

}  // namespace

void StatsMsrLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutStatsResult"] =
      processor::makeDataItemInitializer(accessAttribute<attr::OutStatsResult>());
}

BoolResult StatsMsrLvl1::retrieveFirstProvider(const core::BasePriority& priority,
                                               boost::shared_ptr<core::BaseActionProvider>& provider) {
  const auto image = getStorage<attr::InImg>();
  if (image->getSizeZ() == 1)
    provider = dispatch(priority, planeSplit<StatsMsr2dLvl2, attr::InSubImg2d>(image), _sums);
  else
    provider = dispatch(priority, volumeSplit<StatsMsr3dLvl2, attr::InSubImg3d>(image), _sums);
  return true;
}

BoolResult StatsMsrLvl1::retrieveSecondProvider(const core::BasePriority&,
                                                boost::shared_ptr<core::BaseActionProvider>&) {
  StatsMsrSums sums = emptySums();
  for (const auto& piece : _sums) add(sums, *piece);
  fillResult(sums, *getStorage<attr::OutStatsResult>());
  return true;
}

namespace {

using Call = processor::CallForms<StatsMsrLvl1, attr::OutStatsResult, attr::InImg>;

}  // namespace

boost::shared_ptr<attr::StatsResult> statsMsr(const boost::shared_ptr<const image::BaseImage>& inImg) {
  return Call::run(inImg);
}

void statsMsr(const boost::shared_ptr<const image::BaseImage>& inImg,
              const boost::shared_ptr<attr::StatsResult>& outStatsResult) {
  Call::fill(inImg, outStatsResult);
}

boost::shared_ptr<StatsMsrLvl1> statsMsr_async(const boost::shared_ptr<const image::BaseImage>& inImg) {
  return Call::start(inImg);
}

boost::shared_ptr<StatsMsrLvl1> statsMsr_async(const boost::shared_ptr<const image::BaseImage>& inImg,
                                               const boost::shared_ptr<attr::StatsResult>& outStatsResult) {
  return Call::startFill(inImg, outStatsResult);
}

boost::shared_ptr<attr::StatsResult> getAsyncProcessorOutput(
    const boost::shared_ptr<StatsMsrLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::glbmsr
