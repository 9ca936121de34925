#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows.
class VEXO_API GenericMedian2dImgLvl3 final : public processor::KernelProcessorClass<GenericMedian2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlYStrip2d, attr::OutYStrip2d>;
  static constexpr auto toolTipId = eProcessorMessage::GenericMedian2dImgLvl3;
  /// A row is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 4}; }
};

/// Level 2, one plane, in bands of rows.
class VEXO_API GenericMedian2dImgLvl2 final
    : public StripLevel<GenericMedian2dImgLvl2, GenericMedian2dImgLvl3> {
public:
  using Attributes =
      processor::AttributeList<attr::InSubImg2d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::GenericMedian2dImgLvl2;
};

}  // namespace vexo::imaproc::filter
