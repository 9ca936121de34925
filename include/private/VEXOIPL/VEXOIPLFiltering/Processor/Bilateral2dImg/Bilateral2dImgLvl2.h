#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralTables.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 2, one plane: cuts it into bands of rows with the margins of the window, for level 3.
class VEXO_API Bilateral2dImgLvl2 final
    : public FilterClass<Bilateral2dImgLvl2, processor::BaseAsync1Processor, attr::InSubImg2d> {
public:
  using Attributes = BilateralLvl2Attributes<attr::InSubImg2d>;
  static constexpr auto toolTipId = eProcessorMessage::Bilateral2dImgLvl2;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

}  // namespace vexo::imaproc::filter
