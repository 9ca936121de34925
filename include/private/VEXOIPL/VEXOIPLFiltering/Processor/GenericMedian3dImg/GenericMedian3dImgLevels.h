#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of slices.
class VEXO_API GenericMedian3dImgLvl3 final : public processor::KernelProcessorClass<GenericMedian3dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlZStrip3d, attr::OutZStrip3d>;
  static constexpr auto toolTipId = eProcessorMessage::GenericMedian3dImgLvl3;
  /// A slice is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

/// Level 2, one volume, in bands of slices.
class VEXO_API GenericMedian3dImgLvl2 final
    : public StripLevel<GenericMedian3dImgLvl2, GenericMedian3dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg3d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::GenericMedian3dImgLvl2;

private:
  /// In place the results of a strip stay in a buffer of its own until all of it has been read.
  StripCut getCut() const override {
    return {windowMargins(*this), image::eStripAllocationType::OwnBuffer, image::eStripParsingDirection::Z};
  }
};

}  // namespace vexo::imaproc::filter
