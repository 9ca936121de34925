#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows: runs the kernel that fits the sample type and the processor.
class VEXO_API DespeckleFilter2dImgLvl3 final
    : public processor::KernelProcessorClass<DespeckleFilter2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlYStrip2d, attr::InFactor, attr::OutYStrip2d>;
  static constexpr auto toolTipId = eProcessorMessage::DespeckleFilter2dImgLvl3;

private:
  BoolResult preProcessStrip() override;
  const void* getKernelParameters() const override { return &_factor; }

  double _factor = 0;
};

}  // namespace vexo::imaproc::filter
