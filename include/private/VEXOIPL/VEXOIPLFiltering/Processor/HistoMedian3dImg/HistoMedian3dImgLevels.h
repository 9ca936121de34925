#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Median/HistogramMedian.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

class HistoOkMedian2dImgLvl3;

/// Level 3, one band of slices: the kernel of planes takes any strip.
class VEXO_API HistoMedian3dImgLvl3 final
    : public HistogramMedianLvl3<HistoMedian3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d,
                                 HistoOkMedian2dImgLvl3> {
public:
  static constexpr auto toolTipId = eProcessorMessage::HistoMedian3dImgLvl3;
  static constexpr std::uint32_t version = 2;

  /// A slice is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

/// Level 2, one volume, in bands of slices.
class VEXO_API HistoMedian3dImgLvl2 final : public StripLevel<HistoMedian3dImgLvl2, HistoMedian3dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg3d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::InInputRange, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::HistoMedian3dImgLvl2;

private:
  /// In place the results of a strip stay in a buffer of its own until all of it has been read: the slices of
  /// a window are loaded again for each slice.
  StripCut getCut() const override {
    return {windowMargins(*this), image::eStripAllocationType::OwnBuffer, image::eStripParsingDirection::Z};
  }
};

}  // namespace vexo::imaproc::filter
