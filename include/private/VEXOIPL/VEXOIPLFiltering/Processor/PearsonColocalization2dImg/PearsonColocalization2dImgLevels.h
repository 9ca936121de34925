#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Pearson/PearsonLevels.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows.
class VEXO_API PearsonColocalization2dImgLvl3 final
    : public PearsonLvl3<PearsonColocalization2dImgLvl3, attr::InYStrip2d1, attr::InYStrip2d2,
                         attr::OutYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization2dImgLvl3;
};

/// Level 2, one plane of each image.
class VEXO_API PearsonColocalization2dImgLvl2 final
    : public PearsonLvl2<PearsonColocalization2dImgLvl2, PearsonColocalization2dImgLvl3, attr::InSubImg2d1,
                         attr::InSubImg2d2, image::eStripParsingDirection::Y> {
public:
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization2dImgLvl2;
};

}  // namespace vexo::imaproc::filter
