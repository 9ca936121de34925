#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Attribute/BilateralAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/Attribute/RangeAttributes.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::attr {
class StatsResult;
}

namespace vexo::imaproc::filter {

/// What the spatial weights stand for: the places of a square, of a cube, or the distances 0 to h along an
/// axis.
enum class eBilateralWindow { Square, Cube, Walk };

/// Fails when the window of the call is too large.
VEXO_API processor::RulePtr bilateralRule(const processor::BaseProcessor& level1, eBilateralWindow window);

/// What measuring costs beside the filter, by the samples that are looked at.
VEXO_API double bilateralStepCost(const processor::BaseProcessor& level1, eBilateralWindow window,
                                  std::size_t step);

/// The first step of a call: measures the range of an image that is not 8-bit, which needs none, unless
/// InOptInputRange is given. The result stays null otherwise.
VEXO_API core::ProviderPtr measureRange(const processor::BaseProcessor& level1,
                                        const image::ConstImagePtr& image,
                                        boost::shared_ptr<attr::StatsResult>& statistics);

/// What the first levels of the bilateral filters have in common: they measure the range of the image In,
/// then make the tables of weights and send each plane, or volume, to their second level.
template <class Derived, class In, eBilateralWindow window>
class VEXO_API BilateralClass : public FilterClass<Derived, processor::BaseAsync3Processor> {
  using Base = FilterClass<Derived, processor::BaseAsync3Processor>;

public:
  using Attributes = processor::AttributeList<In, attr::InSpaceSigma, attr::InRangeSigma,
                                              attr::InOptHalfKnlSize, attr::OutImg, attr::InOptInputRange>;

protected:
  processor::RulePtr createRule() const override {
    return Base::createRule() && bilateralRule(*this, window);
  }
  BoolResult retrieveFirstProvider(const core::BasePriority&, core::ProviderPtr& provider) override {
    provider = measureRange(*this, this->template getStorage<In>(), _statistics);
    return true;
  }
  /// Nothing comes between the measure and the filter.
  BoolResult retrieveSecondProvider(const core::BasePriority&, core::ProviderPtr&) override { return true; }
  double getStepCost(std::size_t step) const override { return bilateralStepCost(*this, window, step); }
  void clearIntermediateData() override { _statistics.reset(); }

  boost::shared_ptr<attr::StatsResult> _statistics;  ///< null where nothing is measured
};

}  // namespace vexo::imaproc::filter
