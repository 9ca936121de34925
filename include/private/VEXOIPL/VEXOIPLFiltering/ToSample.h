#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace vexo::imaproc::filter {

/// A value as a sample of another type: integers are limited to the type and round half away from zero; NaN
/// is 0.
template <class TOut, class TIn>
TOut toSample(TIn value) {
  using Limits = std::numeric_limits<TOut>;
  if constexpr (!Limits::is_integer || std::is_same_v<TIn, TOut>) {
    return static_cast<TOut>(value);
  } else {
    const auto wide = static_cast<double>(value);
    if (std::isnan(wide)) return 0;
    return static_cast<TOut>(std::clamp(std::round(wide), static_cast<double>(Limits::lowest()),
                                        static_cast<double>(Limits::max())));
  }
}

}  // namespace vexo::imaproc::filter
