#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of slices: runs the kernel that fits the sample types and the processor.
class VEXO_API GenericMedian3dImgLvl3 final : public processor::KernelProcessorClass<GenericMedian3dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlZStrip3d, attr::OutZStrip3d>;
  static constexpr auto toolTipId = eProcessorMessage::GenericMedian3dImgLvl3;

  /// A slice is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }

private:
  BoolResult preProcessStrip() override;
};

}  // namespace vexo::imaproc::filter
