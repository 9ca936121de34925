#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"

#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLevels.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::glbmsr {
namespace {

const FilterRegistrator<StatsMsrLvl1, StatsMsr2dLvl2, StatsMsr3dLvl2, StatsMsr2dLvl3, StatsMsr3dLvl3>
    registrator;

using Call = processor::CallForms<StatsMsrLvl1, attr::OutStatsResult, attr::InImg>;

}  // namespace

void StatsMsrLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutStatsResult"] =
      processor::makeDataItemInitializer(accessAttribute<attr::OutStatsResult>());
}

/// Level 2 over the pieces of the image, each with sums of its own.
BoolResult StatsMsrLvl1::retrieveFirstProvider(const core::BasePriority& priority,
                                               core::ProviderPtr& provider) {
  const auto image = getStorage<attr::InImg>();
  const bool plane = image->getSizeZ() == 1;
  for (std::size_t i = 0; i < image->getSizeC() * image->getSizeT(); ++i)
    _sums.push_back(boost::make_shared<StatsMsrSums>());
  if (plane)
    provider = dispatchPlanes<StatsMsr2dLvl2>(priority, *this,
                                              withEach<StatsMsr2dLvl2, attr::OutOptStatsSums>(_sums));
  else
    provider = dispatchVolumes<StatsMsr3dLvl2>(priority, *this,
                                               withEach<StatsMsr3dLvl2, attr::OutOptStatsSums>(_sums));
  return true;
}

BoolResult StatsMsrLvl1::retrieveSecondProvider(const core::BasePriority&, core::ProviderPtr&) {
  fillResult(addUp(_sums), *getStorage<attr::OutStatsResult>());
  return true;
}

boost::shared_ptr<attr::StatsResult> statsMsr(const image::ConstImagePtr& inImg) {
  return Call::run(inImg);
}
void statsMsr(const image::ConstImagePtr& inImg, const boost::shared_ptr<attr::StatsResult>& outStatsResult) {
  Call::fill(inImg, outStatsResult);
}
boost::shared_ptr<StatsMsrLvl1> statsMsr_async(const image::ConstImagePtr& inImg) {
  return Call::start(inImg);
}
boost::shared_ptr<StatsMsrLvl1> statsMsr_async(const image::ConstImagePtr& inImg,
                                               const boost::shared_ptr<attr::StatsResult>& outStatsResult) {
  return Call::startFill(inImg, outStatsResult);
}
boost::shared_ptr<attr::StatsResult> getAsyncProcessorOutput(
    const boost::shared_ptr<StatsMsrLvl1>& processor) {
  return Call::await(processor);
}

core::ProviderPtr statsMsrStep(const image::ConstImagePtr& image,
                               boost::shared_ptr<attr::StatsResult>& statistics) {
  statistics = boost::make_shared<attr::StatsResult>();
  return processor::makeSingleActionProvider(
      processor::prepareCall<StatsMsrLvl1, attr::InImg, attr::OutStatsResult>(image, statistics));
}

}  // namespace vexo::imaproc::glbmsr
