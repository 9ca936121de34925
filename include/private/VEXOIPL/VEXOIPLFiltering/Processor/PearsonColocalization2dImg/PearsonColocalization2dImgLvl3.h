#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows: runs the kernel that fits the sample types and the processor.
class VEXO_API PearsonColocalization2dImgLvl3 final
    : public PearsonStrip<PearsonColocalization2dImgLvl3, attr::InYStrip2d1, attr::InYStrip2d2,
                          attr::OutYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization2dImgLvl3;
};

}  // namespace vexo::imaproc::filter
