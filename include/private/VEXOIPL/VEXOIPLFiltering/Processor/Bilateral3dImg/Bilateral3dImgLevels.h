#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralLevels.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

class Bilateral2dImgLvl3;

/// Level 3, one band of rows of all slices: the kernel of planes takes volumes, too.
class VEXO_API Bilateral3dImgLvl3 final
    : public BilateralLvl3<Bilateral3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d, Bilateral2dImgLvl3> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Bilateral3dImgLvl3;

  /// A row of all slices is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 4}; }
};

/// Level 2, one volume, in bands of rows of all slices: the fewest rows are read twice.
class VEXO_API Bilateral3dImgLvl2 final
    : public BilateralLvl2<Bilateral3dImgLvl2, Bilateral3dImgLvl3, attr::InSubImg3d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Bilateral3dImgLvl2;

private:
  /// In place the results of a strip stay in a buffer of its own until all of it has been read: the border
  /// sends windows back to slices that are done.
  StripCut getCut() const override {
    const std::uint32_t half = getStorage<attr::InHalfKnlSize>();
    return {centredMargins(half, half, half), image::eStripAllocationType::OwnBuffer};
  }
};

}  // namespace vexo::imaproc::filter
