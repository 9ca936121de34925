#include "VEXOIPL/VEXOIPLFiltering/Gaussian/GaussianClass.h"

#include "VEXOMath/Gaussian.h"

namespace vexo::imaproc::filter {
namespace {

std::vector<GaussianAxis> axesOf(const processor::BaseProcessor& level1) {
  std::vector<GaussianAxis> axes = {{"InStdDevX", level1.getStorage<attr::InStdDevX>()},
                                    {"InStdDevY", level1.getStorage<attr::InStdDevY>()}};
  if (level1.findAttribute("InStdDevZ")) axes.push_back({"InStdDevZ", level1.getStorage<attr::InStdDevZ>()});
  return axes;
}

boost::shared_ptr<const attr::GaussianCoverage> coverageOf(const processor::BaseProcessor& level1) {
  return level1.getStorage<attr::InOptSmoothingGaussianCoverage>();
}

}  // namespace

processor::RulePtr gaussianRule(const processor::BaseProcessor& level1) {
  return processor::makeRule([&level1] {
    const auto coverage = coverageOf(level1);
    return checkGaussianSmoothing(axesOf(level1), coverage->coverage.getValue(),
                                  coverage->maxHalfKnlSize.getValue());
  });
}

void makeGaussianKernels(const processor::BaseProcessor& level1,
                         std::vector<boost::shared_ptr<const KernelXY>>& kernels) {
  const auto axes = axesOf(level1);
  const auto x = boost::make_shared<KernelXY>(), y = boost::make_shared<KernelXY>();
  const auto coverage = coverageOf(level1);
  separableGaussianSmoothing(axes[0].stdDev, axes[1].stdDev, coverage->coverage.getValue(),
                             coverage->maxHalfKnlSize.getValue(), *x, *y);
  kernels = {x, y};
}

void makeGaussianKernels(const processor::BaseProcessor& level1,
                         std::vector<boost::shared_ptr<const KernelXYZ>>& kernels) {
  const auto axes = axesOf(level1);
  const auto x = boost::make_shared<KernelXYZ>(), y = boost::make_shared<KernelXYZ>(),
             z = boost::make_shared<KernelXYZ>();
  const auto coverage = coverageOf(level1);
  separableGaussianSmoothing(axes[0].stdDev, axes[1].stdDev, axes[2].stdDev, coverage->coverage.getValue(),
                             coverage->maxHalfKnlSize.getValue(), *x, *y, *z);
  kernels = {x, y, z};
}

}  // namespace vexo::imaproc::filter
