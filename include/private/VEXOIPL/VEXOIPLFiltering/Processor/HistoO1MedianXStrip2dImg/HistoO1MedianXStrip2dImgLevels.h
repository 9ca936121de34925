#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Median/HistogramMedian.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

class HistoO1Median2dImgLvl3;

/// Level 3, one band of columns: the kernel for bands of rows takes any strip.
class VEXO_API HistoO1MedianXStrip2dImgLvl3 final
    : public HistogramMedianLvl3<HistoO1MedianXStrip2dImgLvl3, attr::InKnlXStrip2d, attr::OutXStrip2d,
                                 HistoO1Median2dImgLvl3> {
public:
  static constexpr auto toolTipId = eProcessorMessage::HistoO1MedianXStrip2dImgLvl3;

  /// Wide enough for the margins to weigh little, small enough for the caches.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {256, 8}; }
};

/// Level 2, one plane, in bands of columns.
class VEXO_API HistoO1MedianXStrip2dImgLvl2 final
    : public StripLevel<HistoO1MedianXStrip2dImgLvl2, HistoO1MedianXStrip2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg2d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InInputRange, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::HistoO1MedianXStrip2dImgLvl2;

private:
  StripCut getCut() const override {
    return {windowMargins(*this), image::eStripAllocationType::View, image::eStripParsingDirection::X};
  }
};

}  // namespace vexo::imaproc::filter
