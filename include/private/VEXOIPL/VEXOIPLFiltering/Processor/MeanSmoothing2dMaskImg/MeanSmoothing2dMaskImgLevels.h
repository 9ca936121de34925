#pragma once

#include "VEXOIPL/VEXOIPLFiltering/MeanSmoothing/MaskedMean.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows: the mean over the samples of each window whose mask is set; 0 where there is
/// none.
class VEXO_API MeanSmoothing2dMaskImgLvl3 final
    : public processor::KernelProcessorClass<MeanSmoothing2dMaskImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlYStrip2d, attr::InBinKnlYStrip2d, attr::OutYStrip2d>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing2dMaskImgLvl3;
};

/// Level 2, one plane.
class VEXO_API MeanSmoothing2dMaskImgLvl2 final
    : public MaskedMeanLvl2<MeanSmoothing2dMaskImgLvl2, MeanSmoothing2dMaskImgLvl3, logic::MaskImgImgLvl3,
                            image::eStripParsingDirection::Y> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg2d, attr::InSubMaskImg2d, attr::InHalfKnlSizeX,
                                              attr::InHalfKnlSizeY, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing2dMaskImgLvl2;
};

}  // namespace vexo::imaproc::filter
