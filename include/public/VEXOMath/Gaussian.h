#pragma once

#include <vector>

#include "VEXOMath/Kernel.h"

namespace vexo {

/// A standard deviation in samples, with the name that a message gives it.
struct GaussianAxis {
  const char* name;
  float stdDev;
};

/// The largest half size of a Gaussian kernel: strips, which kernels are run on, have no wider margins.
constexpr std::uint32_t maxGaussianHalfSize = 32767;

/// Whether separableGaussianSmoothing takes these values; the message names the first that it refuses: a
/// deviation that is negative or not finite, a coverage outside ]0, 1[, a deviation whose kernel would have a
/// larger half size than maxGaussianHalfSize.
VEXO_API BoolResult checkGaussianSmoothing(const std::vector<GaussianAxis>& axes, float coverage,
                                           std::uint32_t maxHalfKnlSize);

/// One kernel for each axis, points in the order of their offsets; applied one after the other they smooth by
/// a Gaussian. Whatever the kernels held before is replaced.
///
/// stdDevX, ...: in samples. 0 gives the kernel of one point, which changes nothing.
/// coverage: the part of the area under the Gaussian that a kernel reaches over, in ]0, 1[; decides its half
/// size, which is at least 1. maxHalfKnlSize: limits the half size; 0 sets no limit.
///
/// The weights are samples of the Gaussian divided by their sum. Throws what checkGaussianSmoothing refuses,
/// and leaves the kernels as they were.
VEXO_API void separableGaussianSmoothing(float stdDevX, float stdDevY, float coverage,
                                         std::uint32_t maxHalfKnlSize, KernelXY& kernelX, KernelXY& kernelY);
VEXO_API void separableGaussianSmoothing(float stdDevX, float stdDevY, float stdDevZ, float coverage,
                                         std::uint32_t maxHalfKnlSize, KernelXYZ& kernelX, KernelXYZ& kernelY,
                                         KernelXYZ& kernelZ);

}  // namespace vexo
