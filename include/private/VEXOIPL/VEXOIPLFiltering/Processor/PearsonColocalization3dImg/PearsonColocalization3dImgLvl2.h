#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLvl3.h"

namespace vexo::imaproc::filter {

/// Level 2, one volume.
class VEXO_API PearsonColocalization3dImgLvl2 final
    : public PearsonSubImage<PearsonColocalization3dImgLvl2, PearsonColocalization3dImgLvl3,
                             attr::InSubImg3d1, attr::InSubImg3d2, attr::InZStrip3d1, attr::InZStrip3d2,
                             attr::OutZStrip3d, image::eStripParsingDirection::Z> {
public:
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization3dImgLvl2;
};

}  // namespace vexo::imaproc::filter
