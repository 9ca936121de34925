#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Attribute/DespeckleAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows.
class VEXO_API DespeckleFilter2dImgLvl3 final
    : public processor::KernelProcessorClass<DespeckleFilter2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlYStrip2d, attr::InFactor, attr::OutYStrip2d>;
  static constexpr auto toolTipId = eProcessorMessage::DespeckleFilter2dImgLvl3;

private:
  BoolResult preProcessStrip() override {
    _factor = getStorage<attr::InFactor>();
    return true;
  }
  const void* getKernelParameters() const override { return &_factor; }

  double _factor = 0;
};

/// Level 2, one plane, in bands of rows.
class VEXO_API DespeckleFilter2dImgLvl2 final
    : public StripLevel<DespeckleFilter2dImgLvl2, DespeckleFilter2dImgLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg2d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InFactor, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::DespeckleFilter2dImgLvl2;

private:
  processor::RulePtr createRule() const override {
    return matchSizeAndType(accessAttribute<attr::InSubImg2d>(), accessAttribute<attr::OutImg>());
  }
  StripCut getCut() const override;
};

}  // namespace vexo::imaproc::filter
