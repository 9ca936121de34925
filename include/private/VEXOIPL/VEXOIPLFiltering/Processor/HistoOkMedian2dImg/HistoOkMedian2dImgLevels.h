#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Median/HistogramMedian.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows.
class VEXO_API HistoOkMedian2dImgLvl3 final
    : public HistogramMedianLvl3<HistoOkMedian2dImgLvl3, attr::InKnlYStrip2d, attr::OutYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::HistoOkMedian2dImgLvl3;

  /// A row is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 4}; }
};

/// Level 2, one plane, in bands of rows.
class VEXO_API HistoOkMedian2dImgLvl2 final
    : public StripLevel<HistoOkMedian2dImgLvl2, HistoOkMedian2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg2d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InInputRange, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::HistoOkMedian2dImgLvl2;
};

}  // namespace vexo::imaproc::filter
