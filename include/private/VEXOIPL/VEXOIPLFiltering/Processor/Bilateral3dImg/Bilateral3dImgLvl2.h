#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralTables.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 2, one volume: cuts it into bands of rows of all slices with the margins of the window, for level 3.
class VEXO_API Bilateral3dImgLvl2 final
    : public FilterClass<Bilateral3dImgLvl2, processor::BaseAsync1Processor, attr::InSubImg3d> {
public:
  using Attributes = BilateralLvl2Attributes<attr::InSubImg3d>;
  static constexpr auto toolTipId = eProcessorMessage::Bilateral3dImgLvl2;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

}  // namespace vexo::imaproc::filter
