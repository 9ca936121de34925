#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one volume on the GPU.
class VEXO_API Convolution3dImgGpuLvl3 final
    : public processor::ProcessorClass<Convolution3dImgGpuLvl3, processor::BaseGpuProcessingAlgorithm> {
public:
  using Attributes = processor::AttributeList<attr::InSubGpuImg, attr::InKnlXYZ, attr::InNormalize,
                                              attr::InConvolBorder3d, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::Convolution3dImgGpuLvl3;

private:
  BoolResult processOnGpu() override;
};

}  // namespace vexo::imaproc::filter
