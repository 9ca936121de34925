#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralLevels.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, the pass along X of one strip.
class VEXO_API SeparatedBilateralX2dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralX2dImgLvl3, attr::InKnlYStrip2d, attr::OutYStrip2d,
                           SeparatedBilateralX2dImgLvl3, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralX2dImgLvl3;
};

/// Level 3, the pass along Y of one strip.
class VEXO_API SeparatedBilateralY2dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralY2dImgLvl3, attr::InKnlYStrip2d, attr::OutYStrip2d,
                           SeparatedBilateralY2dImgLvl3, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralY2dImgLvl3;
};

/// Level 2, one plane: a pass along each axis, the first from the input into the output, the other in place
/// on the output.
class VEXO_API SeparatedBilateral2dImgLvl2 final
    : public SeparatedBilateralLvl2<SeparatedBilateral2dImgLvl2, processor::BaseAsync2Processor,
                                    attr::InSubImg2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateral2dImgLvl2;

private:
  BoolResult retrieveFirstProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    return firstPass<SeparatedBilateralX2dImgLvl3>(priority, provider);
  }
  BoolResult retrieveSecondProvider(const core::BasePriority& priority,
                                    core::ProviderPtr& provider) override {
    return laterPass<SeparatedBilateralY2dImgLvl3>(1, priority, provider);
  }
};

}  // namespace vexo::imaproc::filter
