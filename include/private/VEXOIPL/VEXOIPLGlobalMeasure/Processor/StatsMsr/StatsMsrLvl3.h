#pragma once

#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrSums.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/VEXOIPLGlobalMeasureLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::attr {

class OutStatsSums : public processor::Attribute<OutStatsSums, boost::shared_ptr<glbmsr::StatsMsrSums>> {
public:
  static constexpr char toolTip[] = "What the samples of a strip add up to";
};

}  // namespace vexo::imaproc::attr

namespace vexo::imaproc::glbmsr {

/// What level 3 does whatever the cut of the strips.
template <class Derived, class In>
class VEXO_API StatsMsrStrips : public processor::KernelProcessorClass<Derived> {
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

}  // namespace vexo::imaproc::glbmsr
