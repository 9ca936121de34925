#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 2, one plane: cuts it into bands of rows with the margins of the window, for level 3.
class VEXO_API K33Median2dImgLvl2 final
    : public FilterClass<K33Median2dImgLvl2, processor::BaseAsync1Processor, attr::InSubImg2d> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg2d, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::K33Median2dImgLvl2;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

}  // namespace vexo::imaproc::filter
