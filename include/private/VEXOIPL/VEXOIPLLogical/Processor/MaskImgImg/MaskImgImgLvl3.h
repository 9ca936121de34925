#pragma once

#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgParameters.h"
#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::logic {

/// What level 3 does whatever the cut of the strips. First and Out decide on the kernel, which is told the
/// type of Second; the mask is 8-bit.
template <class Derived, class First, class Second, class Mask, class Out>
class VEXO_API MaskImgImgStrips : public processor::KernelProcessorClass<Derived> {
public:
  using Attributes = processor::AttributeList<First, Second, Mask, Out>;

private:
  void getDataTypeIdColl(processor::DataTypeIdentifierColl& types) const override {
    types.add(
        boost::make_shared<ImageBufferTypeIdentifier>(this->template getStorage<First>()->getBufferType()));
    types.add(
        boost::make_shared<ImageBufferTypeIdentifier>(this->template getStorage<Out>()->getBufferType()));
  }
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

}  // namespace vexo::imaproc::logic
