#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralTables.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 2, one plane: a pass along each axis, the first from the input into the output, the others in place
/// on the output.
class VEXO_API SeparatedBilateral2dImgLvl2 final
    : public FilterClass<SeparatedBilateral2dImgLvl2, processor::BaseAsync2Processor, attr::InSubImg2d> {
public:
  using Attributes = BilateralLvl2Attributes<attr::InSubImg2d>;
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateral2dImgLvl2;

private:
  BoolResult retrieveFirstProvider(const core::BasePriority& priority,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override;
  BoolResult retrieveSecondProvider(const core::BasePriority& priority,
                                    boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

}  // namespace vexo::imaproc::filter
