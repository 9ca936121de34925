#pragma once

#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrSums.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/StatsResult.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/VEXOIPLGlobalMeasureLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::attr {

struct OutStatsSums : processor::Attribute<OutStatsSums, boost::shared_ptr<glbmsr::StatsMsrSums>> {
  static constexpr char toolTip[] = "What the samples of a strip add up to";
};
struct OutOptStatsSums : processor::Attribute<OutOptStatsSums, boost::shared_ptr<glbmsr::StatsMsrSums>> {
  static constexpr char toolTip[] = "Receives the sums, exactly, for combination with those of other images";
};

}  // namespace vexo::imaproc::attr

namespace vexo::imaproc::glbmsr {

class StatsMsr2dLvl3;

/// The statistics that sums stand for.
VEXO_API void fillResult(const StatsMsrSums& sums, attr::StatsResult& result);
/// Those of sums that were taken apart, in their order.
VEXO_API StatsMsrSums addUp(const std::vector<boost::shared_ptr<StatsMsrSums>>& parts);

/// What level 3 does whatever the cut of the strips.
template <class Derived, class In>
class VEXO_API StatsMsrStrips : public processor::KernelProcessorClass<Derived, StatsMsr2dLvl3> {
public:
  using Attributes = processor::AttributeList<In, attr::OutStatsSums>;

private:
  const void* getKernelParameters() const override { return &_parameters; }
  BoolResult preProcessStrip() override {
    _parameters.sums = this->template getStorage<attr::OutStatsSums>().get();
    return _parameters.sums ? BoolResult(true) : BoolResult::failure("OutStatsSums is not set");
  }

  StatsMsrParameters _parameters{};
};

/// Level 3, one band of rows.
class VEXO_API StatsMsr2dLvl3 final : public StatsMsrStrips<StatsMsr2dLvl3, attr::InYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::StatsMsr2dLvl3;
};

/// Level 3, one band of slices.
class VEXO_API StatsMsr3dLvl3 final : public StatsMsrStrips<StatsMsr3dLvl3, attr::InZStrip3d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::StatsMsr3dLvl3;
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {1, 1}; }
};

/// What level 2 does whatever its dimension: runs level 3 on strips, then combines their sums in their order.
template <class Derived, class In, class Next, image::eStripParsingDirection direction>
class VEXO_API StatsMsrSubImage : public processor::ProcessorClass<Derived, processor::BaseAsync2Processor> {
public:
  using Attributes = processor::AttributeList<In, attr::OutStatsResult, attr::OutOptStatsSums>;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    initializers["OutStatsResult"] =
        processor::makeDataItemInitializer(this->template accessAttribute<attr::OutStatsResult>());
  }
  BoolResult retrieveFirstProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    _strips = boost::make_shared<StripSums>();
    StripCut cut;
    cut.direction = direction;
    provider = dispatchStrips<Next>(priority, static_cast<const Derived&>(*this), cut,
                                    withSplit<attr::OutStatsSums>(_strips));
    return true;
  }
  BoolResult retrieveSecondProvider(const core::BasePriority&, core::ProviderPtr&) override {
    const StatsMsrSums sums = addUp(_strips->getResults());
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
    : public StatsMsrSubImage<StatsMsr2dLvl2, attr::InSubImg2d, StatsMsr2dLvl3,
                              image::eStripParsingDirection::Y> {
public:
  static constexpr auto toolTipId = eProcessorMessage::StatsMsr2dLvl2;
};

/// Level 2, one volume.
class VEXO_API StatsMsr3dLvl2 final
    : public StatsMsrSubImage<StatsMsr3dLvl2, attr::InSubImg3d, StatsMsr3dLvl3,
                              image::eStripParsingDirection::Z> {
public:
  static constexpr auto toolTipId = eProcessorMessage::StatsMsr3dLvl2;
};

}  // namespace vexo::imaproc::glbmsr
