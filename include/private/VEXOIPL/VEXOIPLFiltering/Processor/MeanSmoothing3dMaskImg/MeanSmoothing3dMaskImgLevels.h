#pragma once

#include "VEXOIPL/VEXOIPLFiltering/MeanSmoothing/MaskedMean.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of slices: the mean over the samples of each window whose mask is set; 0 where there is
/// none.
class VEXO_API MeanSmoothing3dMaskImgLvl3 final
    : public processor::KernelProcessorClass<MeanSmoothing3dMaskImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlZStrip3d, attr::InBinKnlZStrip3d, attr::OutZStrip3d>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing3dMaskImgLvl3;
  /// Volumes have fewer slices than images have rows, and a slice is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 8}; }
};

/// Level 2, one volume.
class VEXO_API MeanSmoothing3dMaskImgLvl2 final
    : public MaskedMeanLvl2<MeanSmoothing3dMaskImgLvl2, MeanSmoothing3dMaskImgLvl3, logic::MaskImgImg3dLvl3,
                            image::eStripParsingDirection::Z> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg3d, attr::InSubBinImg3d, attr::InHalfKnlSizeX,
                                              attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing3dMaskImgLvl2;
};

}  // namespace vexo::imaproc::filter
