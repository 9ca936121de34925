#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of slices: the mean over the samples of each window whose mask is set; 0 where there is
/// none.
class VEXO_API MeanSmoothing3dMaskImgLvl3 final
    : public processor::KernelProcessorClass<MeanSmoothing3dMaskImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlZStrip3d, attr::InBinKnlZStrip3d, attr::OutZStrip3d>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing3dMaskImgLvl3;
  /// Volumes have fewer slices than images have rows, and a slice is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 8}; }

private:
  void getDataTypeIdColl(processor::DataTypeIdentifierColl& types) const override;
  BoolResult preProcessStrip() override;
};

}  // namespace vexo::imaproc::filter
