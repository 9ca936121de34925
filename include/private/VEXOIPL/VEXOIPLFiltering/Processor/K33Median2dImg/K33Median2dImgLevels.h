#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows.
class VEXO_API K33Median2dImgLvl3 final : public processor::KernelProcessorClass<K33Median2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlYStrip2d, attr::OutYStrip2d>;
  static constexpr auto toolTipId = eProcessorMessage::K33Median2dImgLvl3;
};

/// Level 2, one plane, in bands of rows.
class VEXO_API K33Median2dImgLvl2 final : public StripLevel<K33Median2dImgLvl2, K33Median2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg2d, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::K33Median2dImgLvl2;

private:
  StripCut getCut() const override { return {centredMargins(1, 1)}; }
};

}  // namespace vexo::imaproc::filter
