#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralTables.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 3, the pass along X of one strip: runs the kernel that fits the sample types and the processor.
class VEXO_API SeparatedBilateralX3dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralX3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralX3dImgLvl3;
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

/// Level 3, the pass along Y of one strip: runs the kernel that fits the sample types and the processor.
class VEXO_API SeparatedBilateralY3dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralY3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralY3dImgLvl3;
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

/// Level 3, the pass along Z of one strip: runs the kernel that fits the sample types and the processor.
class VEXO_API SeparatedBilateralZ3dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralZ3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralZ3dImgLvl3;
};

}  // namespace vexo::imaproc::filter
