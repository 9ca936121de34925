#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc::filter {

/// Level 2, one plane: means of all samples into the output, then the input's samples where the mask is
/// clear.
///
/// The second step, and windows of the first, read samples that the first has written when the output is the
/// input or the mask: then they are read from a copy.
class VEXO_API MeanSmoothing2dMaskImgLvl2 final
    : public processor::ProcessorClass<MeanSmoothing2dMaskImgLvl2, processor::BaseAsync2Processor> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg2d, attr::InSubMaskImg2d, attr::InHalfKnlSizeX,
                                              attr::InHalfKnlSizeY, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing2dMaskImgLvl2;

private:
  BoolResult preProcess() override;
  void clearIntermediateData() override;
  BoolResult retrieveFirstProvider(const core::BasePriority& priority,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override;
  BoolResult retrieveSecondProvider(const core::BasePriority& priority,
                                    boost::shared_ptr<core::BaseActionProvider>& provider) override;

  boost::shared_ptr<const image::BaseImage> _input, _mask;
};

}  // namespace vexo::imaproc::filter
