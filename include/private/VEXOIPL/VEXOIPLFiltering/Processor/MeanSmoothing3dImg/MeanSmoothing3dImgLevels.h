#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows of all slices: the mean along Z.
class VEXO_API MeanSmoothingZ3dImgLvl3 final
    : public processor::KernelProcessorClass<MeanSmoothingZ3dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlZStrip3d, attr::OutZStrip3d>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothingZ3dImgLvl3;
  /// A row of all slices is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 8}; }
};

/// Level 2, one volume, in bands of rows of all slices: a strip reads no other strip's, and all of them run
/// along Z at once. In place, the slices that the border sends it back to are saved before the first strip
/// starts; the kernel loads every other sample before it writes over it.
class VEXO_API MeanSmoothingZ3dImgLvl2 final
    : public StripLevel<MeanSmoothingZ3dImgLvl2, MeanSmoothingZ3dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg3d, attr::InHalfKnlSizeZ, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothingZ3dImgLvl2;
};

}  // namespace vexo::imaproc::filter
