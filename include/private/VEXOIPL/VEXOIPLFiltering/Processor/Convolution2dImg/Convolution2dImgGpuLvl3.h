#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one plane on the GPU.
class VEXO_API Convolution2dImgGpuLvl3 final
    : public processor::ProcessorClass<Convolution2dImgGpuLvl3, processor::BaseGpuProcessingAlgorithm> {
public:
  using Attributes = processor::AttributeList<attr::InSubGpuImg, attr::InKnlXY, attr::InNormalize,
                                              attr::InConvolBorder2d, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::Convolution2dImgGpuLvl3;

private:
  BoolResult processOnGpu() override;
};

}  // namespace vexo::imaproc::filter
