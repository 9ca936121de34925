#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows: runs the kernel that fits the sample types and the processor.
class VEXO_API K55Median2dImgLvl3 final : public processor::KernelProcessorClass<K55Median2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlYStrip2d, attr::OutYStrip2d>;
  static constexpr auto toolTipId = eProcessorMessage::K55Median2dImgLvl3;

private:
  BoolResult preProcessStrip() override;
};

}  // namespace vexo::imaproc::filter
