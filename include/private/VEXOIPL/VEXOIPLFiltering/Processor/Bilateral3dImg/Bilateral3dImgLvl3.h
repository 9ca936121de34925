#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralTables.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows of all slices: runs the kernel that fits the sample types and the processor.
class VEXO_API Bilateral3dImgLvl3 final
    : public BilateralLvl3<Bilateral3dImgLvl3, attr::InKnlZStrip3d, attr::OutZStrip3d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Bilateral3dImgLvl3;

  /// A row of all slices is much work.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 4}; }
};

}  // namespace vexo::imaproc::filter
