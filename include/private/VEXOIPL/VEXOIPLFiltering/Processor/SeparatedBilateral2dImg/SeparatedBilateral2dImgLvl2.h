#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc::filter {

/// Level 2, one plane: a pass along each axis, the first from the input into the output, the others in place
/// on the output.
class VEXO_API SeparatedBilateral2dImgLvl2 final
    : public processor::ProcessorClass<SeparatedBilateral2dImgLvl2, processor::BaseAsync2Processor> {
public:
  using Attributes =
      processor::AttributeList<attr::InSubImg2d, attr::OutImg, attr::InScaleFactor,
                               attr::InTabulatedSpaceExponentials, attr::InTabulatedRangeExponentials,
                               attr::InSpaceSigma, attr::InRangeSigma, attr::InHalfKnlSize>;
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateral2dImgLvl2;

private:
  processor::RulePtr createRule() const override;
  BoolResult retrieveFirstProvider(const core::BasePriority& priority,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override;
  BoolResult retrieveSecondProvider(const core::BasePriority& priority,
                                    boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

}  // namespace vexo::imaproc::filter
