#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Pearson/PearsonLevels.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

class PearsonColocalization2dImgLvl3;

/// Level 3, one band of slices: the kernel of planes takes volumes, too.
class VEXO_API PearsonColocalization3dImgLvl3 final
    : public PearsonLvl3<PearsonColocalization3dImgLvl3, attr::InZStrip3d1, attr::InZStrip3d2,
                         attr::OutZStrip3d, PearsonColocalization2dImgLvl3> {
public:
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization3dImgLvl3;

  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

/// Level 2, one volume of each image.
class VEXO_API PearsonColocalization3dImgLvl2 final
    : public PearsonLvl2<PearsonColocalization3dImgLvl2, PearsonColocalization3dImgLvl3, attr::InSubImg3d1,
                         attr::InSubImg3d2, image::eStripParsingDirection::Z> {
public:
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization3dImgLvl2;
};

}  // namespace vexo::imaproc::filter
