#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Attribute/MedianAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/Median/LevelMap.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// The levels of an input type over a range. For integers the bounds are truncated towards 0, and up to 256
/// of them have a level each. Of more values, and of floats, several share a level; its sample is the lowest
/// of them, without a fraction for integers. A bound beyond the largest float is cut to it.
LevelMap makeLevelMap(const attr::Range& range, image::eImageBufferType input,
                      image::eImageBufferType output);

/// What the third levels of the histogram medians have in common.
template <class Derived, class InStrip, class OutStrip, class Source = Derived>
class VEXO_API HistogramMedianLvl3 : public processor::KernelProcessorClass<Derived, Source> {
public:
  using Attributes = processor::AttributeList<InStrip, attr::InInputRange, OutStrip>;

private:
  BoolResult preProcessStrip() override {
    _levels = makeLevelMap(*this->template getStorage<attr::InInputRange>(),
                           this->template getStorage<InStrip>()->getBufferType(),
                           this->template getStorage<OutStrip>()->getBufferType());
    return true;
  }
  const void* getKernelParameters() const override { return &_levels; }

  LevelMap _levels;
};

}  // namespace vexo::imaproc::filter
