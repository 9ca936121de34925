#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of slices: runs the kernel that fits the sample types and the processor.
class VEXO_API PearsonColocalization3dImgLvl3 final
    : public PearsonStrip<PearsonColocalization3dImgLvl3, attr::InZStrip3d1, attr::InZStrip3d2,
                          attr::OutZStrip3d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization3dImgLvl3;
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

}  // namespace vexo::imaproc::filter
