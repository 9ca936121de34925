#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/FlatKernel.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of slices: runs the kernel that fits the sample types and the processor.
class VEXO_API Convolution3dImgLvl3 final : public processor::KernelProcessorClass<Convolution3dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlZStrip3d, attr::InKnlXYZ, attr::InNormalize,
                                              attr::InConvolBorder3d, attr::OutZStrip3d>;
  static constexpr auto toolTipId = eProcessorMessage::Convolution3dImgLvl3;

  /// Slices are large: fewer of them make a strip, so that a volume is enough for several threads.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 4}; }

private:
  BoolResult preProcessStrip() override;
  const void* getKernelParameters() const override { return &_kernel.get(); }

  FlatKernel _kernel;
};

}  // namespace vexo::imaproc::filter
