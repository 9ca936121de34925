#pragma once

#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// What maps of two images into a float32 image have in common.
template <class Derived, class Base>
class VEXO_API PearsonClass : public FilterClass<Derived, Base> {
protected:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    promoteInput(*this, initializers);
  }
  processor::RulePtr createRule() const override {
    return matchSizes(*this) && isReal32(this->template accessAttribute<attr::OutRealImg>());
  }
};

}  // namespace vexo::imaproc::filter
