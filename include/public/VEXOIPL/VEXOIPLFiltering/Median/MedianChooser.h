#pragma once

#include <functional>

#include "VEXOIPL/VEXOIPLFiltering/Attribute/MedianAttributes.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/StatsResult.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/Steps.h"

namespace vexo::imaproc::filter {

struct LevelUse;

/// What the median filters that choose among others have in common: where the range of the samples decides,
/// they measure that first, unless InOptInputRange is given.
class VEXO_API MedianChooser : public processor::BaseRepeatedAsync1Processor {
protected:
  /// A child, as it is told and as it is run.
  struct Step {
    processor::ChildChoice choice;
    std::function<core::ProviderPtr()> run;  ///< none: the choice is to measure
  };
  static Step measureFor(const std::string& halfSizes);

  /// One that has nothing to run where the range decides.
  virtual Step chooseByHalfSizes() const = 0;
  virtual Step chooseByLevels(const LevelUse& levels) const = 0;
  /// Called when the range is known.
  virtual void noteLevels(const LevelUse&) {}
  /// Measured, or given.
  boost::shared_ptr<const attr::Range> getRange() const;

  void clearIntermediateData() override;

private:
  processor::ChoiceColl foreseeChoices() const override;
  std::size_t getRepetitionCount() const override { return 2; }
  double getStepCost(std::size_t step) const override;
  BoolResult retrieveProvider(const core::BasePriority& priority, std::size_t step,
                              core::ProviderPtr& provider) override;
  LevelUse levelsFor(const attr::Range& range) const;
  Step chooseFirst() const;
  Step chooseByRange();
  Step chooseByRange(const attr::Range& range) const;

  bool _lastStepTaken = false;
  boost::shared_ptr<attr::StatsResult> _stats;
  boost::shared_ptr<const attr::Range> _range;  ///< of all samples of the image
};

}  // namespace vexo::imaproc::filter
