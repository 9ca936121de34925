#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 2, one volume: cuts it into bands of slices with the margins of the window, for level 3.
class VEXO_API GenericMedian3dImgLvl2 final
    : public FilterClass<GenericMedian3dImgLvl2, processor::BaseAsync1Processor, attr::InSubImg3d> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg3d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::GenericMedian3dImgLvl2;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

}  // namespace vexo::imaproc::filter
