#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Median/HistogramMedian.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows.
class VEXO_API HistoO1Median2dImgLvl3 final
    : public HistogramMedianLvl3<HistoO1Median2dImgLvl3, attr::InKnlYStrip2d, attr::OutYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::HistoO1Median2dImgLvl3;
};

/// Level 2, one plane, in bands of rows.
class VEXO_API HistoO1Median2dImgLvl2 final
    : public StripLevel<HistoO1Median2dImgLvl2, HistoO1Median2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg2d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InInputRange, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::HistoO1Median2dImgLvl2;
};

}  // namespace vexo::imaproc::filter
