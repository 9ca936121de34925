#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralLevels.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

class SeparatedBilateralX2dImgLvl3;
class SeparatedBilateralY2dImgLvl3;

/// Level 3, the pass along X of one strip.
class VEXO_API SeparatedBilateralX3dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralX3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d,
                           SeparatedBilateralX2dImgLvl3, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralX3dImgLvl3;
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

/// Level 3, the pass along Y of one strip.
class VEXO_API SeparatedBilateralY3dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralY3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d,
                           SeparatedBilateralY2dImgLvl3, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralY3dImgLvl3;
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

/// Level 3, the pass along Z of one strip.
class VEXO_API SeparatedBilateralZ3dImgLvl3 final
    : public BilateralLvl3<SeparatedBilateralZ3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d,
                           SeparatedBilateralZ3dImgLvl3, true> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateralZ3dImgLvl3;
};

/// Level 2, one volume: a pass along each axis, the first from the input into the output, the others in place
/// on the output. The pass along Z takes bands of rows of all slices, the others bands of slices.
class VEXO_API SeparatedBilateral3dImgLvl2 final
    : public SeparatedBilateralLvl2<SeparatedBilateral3dImgLvl2, processor::BaseAsync3Processor,
                                    attr::InSubImg3d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateral3dImgLvl2;

private:
  static constexpr auto slices = image::eStripParsingDirection::Z;

  BoolResult retrieveFirstProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    return firstPass<SeparatedBilateralX3dImgLvl3>(priority, provider, slices);
  }
  BoolResult retrieveSecondProvider(const core::BasePriority& priority,
                                    core::ProviderPtr& provider) override {
    return laterPass<SeparatedBilateralY3dImgLvl3>(1, priority, provider, slices);
  }
  BoolResult retrieveThirdProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    return laterPass<SeparatedBilateralZ3dImgLvl3>(2, priority, provider);
  }
};

}  // namespace vexo::imaproc::filter
