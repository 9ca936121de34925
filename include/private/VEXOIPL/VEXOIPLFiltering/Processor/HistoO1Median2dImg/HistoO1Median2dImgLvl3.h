#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistogramMedian.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows: runs the kernel that fits the sample types and the processor.
class VEXO_API HistoO1Median2dImgLvl3 final
    : public HistogramMedianLvl3<HistoO1Median2dImgLvl3, attr::InKnlYStrip2d, attr::OutYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::HistoO1Median2dImgLvl3;
};

}  // namespace vexo::imaproc::filter
