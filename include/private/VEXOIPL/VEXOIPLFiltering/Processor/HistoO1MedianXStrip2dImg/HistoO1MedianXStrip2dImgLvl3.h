#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistogramMedian.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of columns: runs the kernel that fits the sample types and the processor.
class VEXO_API HistoO1MedianXStrip2dImgLvl3 final
    : public HistogramMedianLvl3<HistoO1MedianXStrip2dImgLvl3, attr::InKnlXStrip2d, attr::OutXStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::HistoO1MedianXStrip2dImgLvl3;

  /// Wide enough for the margins to weigh little, small enough for the caches.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {256, 8}; }
};

}  // namespace vexo::imaproc::filter
