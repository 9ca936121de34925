#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows: the mean over the samples of each window whose mask is set; 0 where there is
/// none.
class VEXO_API MeanSmoothing2dMaskImgLvl3 final
    : public processor::KernelProcessorClass<MeanSmoothing2dMaskImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlYStrip2d, attr::InBinKnlYStrip2d, attr::OutYStrip2d>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing2dMaskImgLvl3;

private:
  void getDataTypeIdColl(processor::DataTypeIdentifierColl& types) const override;
  BoolResult preProcessStrip() override;
};

}  // namespace vexo::imaproc::filter
