#include "VEXOMath/Gaussian.h"

#include <algorithm>
#include <boost/math/special_functions/erf.hpp>
#include <cmath>

#include "VEXOCore/DataItem.h"
#include "VEXOCore/Log.h"

namespace vexo {
namespace {

BoolResult refused(const char* name, float value, const std::string& reason) {
  return BoolResult::failure(std::string(name) +
                             ": the value is refused: " + ScalarText<float>::toText(value) + " " + reason);
}

/// A whole number; in double, because a large deviation takes it beyond every integer.
double halfSize(float stdDev, float coverage, std::uint32_t maxHalfKnlSize) {
  if (stdDev == 0) return 0;
  const double reach = stdDev * std::sqrt(2.0) * boost::math::erf_inv(static_cast<double>(coverage));
  const double half = std::max(1.0, std::ceil(reach));
  return maxHalfKnlSize == 0 ? half : std::min<double>(half, maxHalfKnlSize);
}

template <class Kernel, class Offset>
Kernel smoothingKernel(std::int32_t Offset::*axis, float stdDev, float coverage,
                       std::uint32_t maxHalfKnlSize) {
  const auto half = static_cast<std::int32_t>(halfSize(stdDev, coverage, maxHalfKnlSize));
  const double deviation = stdDev;
  // By distance from the centre. The centre does not depend on the deviation, which may be 0.
  std::vector<double> weights = {1};
  double sum = 1;
  for (std::int32_t d = 1; d <= half; ++d) {
    const double distance = d / deviation;
    weights.push_back(std::exp(-distance * distance / 2));
    sum += 2 * weights.back();
  }
  Kernel kernel;
  for (std::int32_t d = -half; d <= half; ++d) {
    Offset offset{};
    offset.*axis = d;
    kernel.insert(offset, static_cast<float>(weights[static_cast<std::size_t>(std::abs(d))] / sum));
  }
  return kernel;
}

void requireGaussianSmoothing(const std::vector<GaussianAxis>& axes, float coverage,
                              std::uint32_t maxHalfKnlSize) {
  if (const BoolResult taken = checkGaussianSmoothing(axes, coverage, maxHalfKnlSize); !taken)
    raiseError(VEXO_HERE, "VEXOMath", taken.getMessage());
}

}  // namespace

BoolResult checkGaussianSmoothing(const std::vector<GaussianAxis>& axes, float coverage,
                                  std::uint32_t maxHalfKnlSize) {
  // Comparisons with NaN are false.
  if (!(coverage > 0 && coverage < 1)) return refused("coverage", coverage, "is not in ]0, 1[");
  for (const auto& [name, stdDev] : axes) {
    if (!std::isfinite(stdDev)) return refused(name, stdDev, "is not finite");
    if (stdDev < 0) return refused(name, stdDev, "is negative");
    if (halfSize(stdDev, coverage, maxHalfKnlSize) > maxGaussianHalfSize)
      return refused(name, stdDev,
                     "needs a kernel over the largest half size, " + std::to_string(maxGaussianHalfSize));
  }
  return true;
}

void separableGaussianSmoothing(float stdDevX, float stdDevY, float coverage, std::uint32_t maxHalfKnlSize,
                                KernelXY& kernelX, KernelXY& kernelY) {
  requireGaussianSmoothing({{"stdDevX", stdDevX}, {"stdDevY", stdDevY}}, coverage, maxHalfKnlSize);
  KernelXY alongX = smoothingKernel<KernelXY>(&OffsetXY::dx, stdDevX, coverage, maxHalfKnlSize);
  KernelXY alongY = smoothingKernel<KernelXY>(&OffsetXY::dy, stdDevY, coverage, maxHalfKnlSize);
  kernelX = std::move(alongX);
  kernelY = std::move(alongY);
}

void separableGaussianSmoothing(float stdDevX, float stdDevY, float stdDevZ, float coverage,
                                std::uint32_t maxHalfKnlSize, KernelXYZ& kernelX, KernelXYZ& kernelY,
                                KernelXYZ& kernelZ) {
  requireGaussianSmoothing({{"stdDevX", stdDevX}, {"stdDevY", stdDevY}, {"stdDevZ", stdDevZ}}, coverage,
                           maxHalfKnlSize);
  KernelXYZ alongX = smoothingKernel<KernelXYZ>(&OffsetXYZ::dx, stdDevX, coverage, maxHalfKnlSize);
  KernelXYZ alongY = smoothingKernel<KernelXYZ>(&OffsetXYZ::dy, stdDevY, coverage, maxHalfKnlSize);
  KernelXYZ alongZ = smoothingKernel<KernelXYZ>(&OffsetXYZ::dz, stdDevZ, coverage, maxHalfKnlSize);
  kernelX = std::move(alongX);
  kernelY = std::move(alongY);
  kernelZ = std::move(alongZ);
}

}  // namespace vexo
