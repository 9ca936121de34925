#pragma once

#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl3.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/StatsResult.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"

namespace vexo::imaproc::attr {

class OutOptStatsSums
    : public processor::Attribute<OutOptStatsSums, boost::shared_ptr<glbmsr::StatsMsrSums>> {
public:
  static constexpr char toolTip[] = "Receives the sums, exactly, for combination with those of other images";
};

}  // namespace vexo::imaproc::attr

namespace vexo::imaproc::glbmsr {

/// The statistics that sums stand for.
VEXO_API void fillResult(const StatsMsrSums& sums, attr::StatsResult& result);

/// What level 2 does whatever its dimension: runs level 3 on strips, then combines their sums in their order.
template <class Derived, class In, class Strip, class Next, template <class, class, class> class Split>
class VEXO_API StatsMsrSubImage : public processor::ProcessorClass<Derived, processor::BaseAsync2Processor> {
public:
  using Attributes = processor::AttributeList<In, attr::OutStatsResult, attr::OutOptStatsSums>;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    initializers["OutStatsResult"] =
        processor::makeDataItemInitializer(this->template accessAttribute<attr::OutStatsResult>());
  }
  BoolResult retrieveFirstProvider(const core::BasePriority& priority,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override {
    _strips = boost::make_shared<StripSums>();
    provider = processor::dispatchStrips<Next>(
        priority,
        boost::make_shared<Split<Next, const image::BaseImage, Strip>>(this->template getStorage<In>(),
                                                                       image::eStripAllocationType::View),
        _strips);
    return true;
  }
  BoolResult retrieveSecondProvider(const core::BasePriority&,
                                    boost::shared_ptr<core::BaseActionProvider>&) override {
    StatsMsrSums sums = emptySums();
    for (const auto& strip : _strips->getResults()) add(sums, *strip);
    fillResult(sums, *this->template getStorage<attr::OutStatsResult>());
    if (const auto wanted = this->template getStorage<attr::OutOptStatsSums>()) *wanted = sums;
    return true;
  }
  void clearIntermediateData() override { _strips.reset(); }

  using StripSums = processor::DynamicCollectedResultSplit<Next, attr::OutStatsSums>;
  boost::shared_ptr<StripSums> _strips;
};

/// Level 2, one plane.
class VEXO_API StatsMsr2dLvl2 final
    : public StatsMsrSubImage<StatsMsr2dLvl2, attr::InSubImg2d, attr::InYStrip2d, StatsMsr2dLvl3,
                              ImageYStrip2dSplit> {
public:
  static constexpr auto toolTipId = eProcessorMessage::StatsMsr2dLvl2;
};

/// Level 2, one volume.
class VEXO_API StatsMsr3dLvl2 final
    : public StatsMsrSubImage<StatsMsr3dLvl2, attr::InSubImg3d, attr::InZStrip3d, StatsMsr3dLvl3,
                              ImageZStrip3dSplit> {
public:
  static constexpr auto toolTipId = eProcessorMessage::StatsMsr3dLvl2;
};

}  // namespace vexo::imaproc::glbmsr
