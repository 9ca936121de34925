#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistogramMedian.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows: runs the kernel that fits the sample types and the processor.
class VEXO_API HistoOkMedian2dImgLvl3 final
    : public HistogramMedianLvl3<HistoOkMedian2dImgLvl3, attr::InKnlYStrip2d, attr::OutYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::HistoOkMedian2dImgLvl3;

  /// A row is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 4}; }
};

}  // namespace vexo::imaproc::filter
