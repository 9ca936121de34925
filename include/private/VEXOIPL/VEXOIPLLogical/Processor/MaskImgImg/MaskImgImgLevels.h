#pragma once

#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgParameters.h"
#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::logic {

class MaskImgImgLvl3;

/// What level 3 does whatever the cut of the strips. First and Out decide on the kernel, which is told the
/// type of Second; the mask is 8-bit.
template <class Derived, class First, class Second, class Mask, class Out>
class VEXO_API MaskImgImgStrips : public processor::KernelProcessorClass<Derived, MaskImgImgLvl3> {
public:
  using Attributes = processor::AttributeList<First, Second, Mask, Out>;

private:
  const void* getKernelParameters() const override { return &_parameters; }
  BoolResult preProcessStrip() override {
    _parameters.secondType = static_cast<int>(this->template getStorage<Second>()->getBufferType());
    return true;
  }

  MaskImgImgParameters _parameters{};
};

/// Level 3, one band of rows.
class VEXO_API MaskImgImgLvl3 final
    : public MaskImgImgStrips<MaskImgImgLvl3, attr::InYStrip2d1, attr::InYStrip2d2, attr::InMaskYStrip2d,
                              attr::OutYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::MaskImgImgLvl3;
};

/// Level 3, one band of slices.
class VEXO_API MaskImgImg3dLvl3 final
    : public MaskImgImgStrips<MaskImgImg3dLvl3, attr::InZStrip3d1, attr::InZStrip3d2, attr::InMaskZStrip3d,
                              attr::OutZStrip3d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::MaskImgImg3dLvl3;
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {4, 1}; }
};

/// Level 2, one plane, in bands of rows.
class VEXO_API MaskImgImgLvl2 final : public PointLevel<MaskImgImgLvl2, MaskImgImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InImg1, attr::InImg2, attr::InMaskImg, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MaskImgImgLvl2;
};

}  // namespace vexo::imaproc::logic
