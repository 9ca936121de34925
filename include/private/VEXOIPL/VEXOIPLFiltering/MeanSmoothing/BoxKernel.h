#pragma once

#include <boost/make_shared.hpp>

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLog.h"
#include "VEXOMath/Kernel.h"

namespace vexo::imaproc::filter {

/// On the GPU the mean is a normalised convolution with ones, whose cost grows with the window: beyond this
/// many it is refused.
constexpr std::uint64_t maxBoxPoints = std::uint64_t(1) << 20;

inline void checkBoxPoints(std::uint64_t points) {
  if (points > maxBoxPoints)
    FilteringModule::raise(
        VEXO_HERE, joinValues({"a window of ", points, " samples is too large for the GPU; the most is ",
                               maxBoxPoints}));
}

/// Ones at every offset of the window, row by row.
inline boost::shared_ptr<const KernelXY> makeBoxKernel(std::uint32_t halfX, std::uint32_t halfY) {
  checkBoxPoints((2 * std::uint64_t(halfX) + 1) * (2 * std::uint64_t(halfY) + 1));
  const auto kernel = boost::make_shared<KernelXY>();
  const auto hx = static_cast<std::int32_t>(halfX), hy = static_cast<std::int32_t>(halfY);
  for (std::int32_t dy = -hy; dy <= hy; ++dy)
    for (std::int32_t dx = -hx; dx <= hx; ++dx) kernel->insert({dx, dy}, 1);
  return kernel;
}

inline boost::shared_ptr<const KernelXYZ> makeBoxKernel(std::uint32_t halfX, std::uint32_t halfY,
                                                        std::uint32_t halfZ) {
  // Half sizes are at most 32767, so the product of three stays within 64 bits.
  checkBoxPoints((2 * std::uint64_t(halfX) + 1) * (2 * std::uint64_t(halfY) + 1) *
                 (2 * std::uint64_t(halfZ) + 1));
  const auto kernel = boost::make_shared<KernelXYZ>();
  const auto hx = static_cast<std::int32_t>(halfX), hy = static_cast<std::int32_t>(halfY),
             hz = static_cast<std::int32_t>(halfZ);
  for (std::int32_t dz = -hz; dz <= hz; ++dz)
    for (std::int32_t dy = -hy; dy <= hy; ++dy)
      for (std::int32_t dx = -hx; dx <= hx; ++dx) kernel->insert({dx, dy, dz}, 1);
  return kernel;
}

}  // namespace vexo::imaproc::filter
