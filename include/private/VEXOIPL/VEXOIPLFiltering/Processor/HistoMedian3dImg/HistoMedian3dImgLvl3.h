#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistogramMedian.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of slices: runs the kernel that fits the sample types and the processor.
class VEXO_API HistoMedian3dImgLvl3 final
    : public HistogramMedianLvl3<HistoMedian3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::HistoMedian3dImgLvl3;
  static constexpr std::uint32_t version = 2;

  /// A slice is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

}  // namespace vexo::imaproc::filter
