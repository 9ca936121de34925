#pragma once

#include <vector>

#include "VEXOIPL/VEXOIPLFiltering/Attribute/GaussianAttributes.h"
#include "VEXOMath/Kernel.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Refuses what makes no kernel: the builder refuses the same values, but only when the output exists
/// already.
VEXO_API processor::RulePtr gaussianRule(const processor::BaseProcessor& level1);
/// The kernels along X, Y and, for volumes, Z.
VEXO_API void makeGaussianKernels(const processor::BaseProcessor& level1,
                                  std::vector<boost::shared_ptr<const KernelXY>>& kernels);
VEXO_API void makeGaussianKernels(const processor::BaseProcessor& level1,
                                  std::vector<boost::shared_ptr<const KernelXYZ>>& kernels);

/// What the Gaussian smoothings of planes and volumes have in common: a kernel for each axis, made for the
/// run.
template <class Derived, class Base, class Kernel>
class VEXO_API GaussianClass : public FilterClass<Derived, Base> {
protected:
  processor::RulePtr createRule() const override { return matchSizes(*this) && gaussianRule(*this); }
  BoolResult preProcess() override {
    makeGaussianKernels(*this, _kernels);
    return true;
  }
  void clearIntermediateData() override { _kernels.clear(); }
  /// Of the pass along an axis: its points, and the way of the samples there and back.
  double getPassCost(std::size_t axis) const { return 4.0 + double(_kernels[axis]->getPoints().size()); }

  std::vector<boost::shared_ptr<const Kernel>> _kernels;
};

}  // namespace vexo::imaproc::filter
