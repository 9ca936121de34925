#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/FlatKernel.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows: runs the kernel that fits the sample types and the processor.
class VEXO_API Convolution2dImgLvl3 final : public processor::KernelProcessorClass<Convolution2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlYStrip2d, attr::InKnlXY, attr::InNormalize,
                                              attr::InConvolBorder2d, attr::OutYStrip2d>;
  static constexpr auto toolTipId = eProcessorMessage::Convolution2dImgLvl3;

private:
  BoolResult preProcessStrip() override;
  const void* getKernelParameters() const override { return &_kernel.get(); }

  FlatKernel _kernel;
};

}  // namespace vexo::imaproc::filter
