#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows of all slices: the mean along Z.
class VEXO_API MeanSmoothingZ3dImgLvl3 final
    : public processor::KernelProcessorClass<MeanSmoothingZ3dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlZStrip3d, attr::OutZStrip3d>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothingZ3dImgLvl3;
  /// A row of all slices is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 8}; }

private:
  BoolResult preProcessStrip() override;
};

}  // namespace vexo::imaproc::filter
