#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralLevels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows.
class VEXO_API Bilateral2dImgLvl3 final
    : public BilateralLvl3<Bilateral2dImgLvl3, attr::InKnlYStrip2d, attr::OutYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Bilateral2dImgLvl3;
};

/// Level 2, one plane, in bands of rows.
class VEXO_API Bilateral2dImgLvl2 final
    : public BilateralLvl2<Bilateral2dImgLvl2, Bilateral2dImgLvl3, attr::InSubImg2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Bilateral2dImgLvl2;

private:
  StripCut getCut() const override {
    const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
    return {centredMargins(half, half)};
  }
};

}  // namespace vexo::imaproc::filter
