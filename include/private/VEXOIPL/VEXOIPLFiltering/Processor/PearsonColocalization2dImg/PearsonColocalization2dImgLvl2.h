#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl3.h"

namespace vexo::imaproc::filter {

/// Level 2, one plane.
class VEXO_API PearsonColocalization2dImgLvl2 final
    : public PearsonSubImage<PearsonColocalization2dImgLvl2, PearsonColocalization2dImgLvl3,
                             attr::InSubImg2d1, attr::InSubImg2d2, attr::InYStrip2d1, attr::InYStrip2d2,
                             attr::OutYStrip2d, image::eStripParsingDirection::Y> {
public:
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization2dImgLvl2;
};

}  // namespace vexo::imaproc::filter
