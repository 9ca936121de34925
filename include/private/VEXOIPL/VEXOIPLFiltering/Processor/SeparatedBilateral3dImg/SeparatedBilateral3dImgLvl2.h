#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralTables.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 2, one volume: a pass along each axis, the first from the input into the output, the others in place
/// on the output.
class VEXO_API SeparatedBilateral3dImgLvl2 final
    : public FilterClass<SeparatedBilateral3dImgLvl2, processor::BaseAsync3Processor, attr::InSubImg3d> {
public:
  using Attributes = BilateralLvl2Attributes<attr::InSubImg3d>;
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateral3dImgLvl2;

private:
  BoolResult retrieveFirstProvider(const core::BasePriority& priority,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override;
  BoolResult retrieveSecondProvider(const core::BasePriority& priority,
                                    boost::shared_ptr<core::BaseActionProvider>& provider) override;
  BoolResult retrieveThirdProvider(const core::BasePriority& priority,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

}  // namespace vexo::imaproc::filter
