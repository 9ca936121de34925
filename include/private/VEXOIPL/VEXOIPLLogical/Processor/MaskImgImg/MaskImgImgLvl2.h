#pragma once

#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc::logic {

/// Level 2, one plane: cuts it into bands of rows for level 3.
class VEXO_API MaskImgImgLvl2 final
    : public processor::ProcessorClass<MaskImgImgLvl2, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg1, attr::InImg2, attr::InMaskImg, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MaskImgImgLvl2;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

}  // namespace vexo::imaproc::logic
