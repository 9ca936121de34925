#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc::filter {

/// Level 2, one volume: sends it to the GPU when it lies there; else cuts it into bands of slices with the
/// margins of the kernel, for level 3. Input and output may be the same image.
class VEXO_API Convolution3dImgLvl2 final
    : public processor::ProcessorClass<Convolution3dImgLvl2, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg3d, attr::InKnlXYZ, attr::InNormalize,
                                              attr::InConvolBorder3d, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::Convolution3dImgLvl2;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
  /// False when the image does not lie on the GPU.
  bool tryToLaunchGpuProcess(const core::BasePriority& priority,
                             boost::shared_ptr<core::BaseActionProvider>& provider) const;
};

}  // namespace vexo::imaproc::filter
