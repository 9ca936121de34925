#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralTables.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 3, the pass along X of one strip: runs the kernel that fits the sample types and the processor.
class VEXO_API SeparatedBilateralX2dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralX2dImgLvl3, attr::InKnlYStrip2d, attr::OutYStrip2d, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralX2dImgLvl3;
};

/// Level 3, the pass along Y of one strip: runs the kernel that fits the sample types and the processor.
class VEXO_API SeparatedBilateralY2dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralY2dImgLvl3, attr::InKnlYStrip2d, attr::OutYStrip2d, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralY2dImgLvl3;
};

}  // namespace vexo::imaproc::filter
