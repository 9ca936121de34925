#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows: runs the kernel that fits the sample types and the processor.
class VEXO_API MeanSmoothing2dImgLvl3 final : public processor::KernelProcessorClass<MeanSmoothing2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlYStrip2d, attr::OutYStrip2d>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing2dImgLvl3;
};

/// Level 2, one plane: cuts it into bands of rows with the margins of the half sizes, for level 3. A second
/// level that cuts otherwise overrides getCut().
class VEXO_API MeanSmoothing2dImgLvl2 final
    : public StripLevel<MeanSmoothing2dImgLvl2, MeanSmoothing2dImgLvl3> {
public:
  using Attributes =
      processor::AttributeList<attr::InSubImg2d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing2dImgLvl2;
};

}  // namespace vexo::imaproc::filter
