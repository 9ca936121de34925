#pragma once

#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc {

/// All images of the processor that are set agree in their five sizes; work images are left out.
VEXO_API processor::RulePtr matchSizes(const processor::BaseProcessor& processor);
/// Each output image that the caller does not give, and that is mandatory or requested, gets the geometry and
/// type of the first input.
VEXO_API void duplicateInput(const processor::BaseProcessor& processor,
                             processor::OutputInitializerColl& initializers);
/// The same, but 32-bit float.
VEXO_API void promoteInput(const processor::BaseProcessor& processor,
                           processor::OutputInitializerColl& initializers);

/// A processor of images: those that are given must have the same sizes, and outputs are made like the first
/// input.
template <class Derived, class Base>
class VEXO_API FilterClass : public processor::ProcessorClass<Derived, Base> {
protected:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    duplicateInput(*this, initializers);
  }
  processor::RulePtr createRule() const override { return matchSizes(*this); }
};

}  // namespace vexo::imaproc
