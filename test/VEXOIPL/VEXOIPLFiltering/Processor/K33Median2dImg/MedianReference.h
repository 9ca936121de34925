#pragma once

#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::test {

inline double middleOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Samples over the whole range of the type, some far from the others; floats with fractions, and infinities.
inline ImagePtr wideImage(const ImageGeometry& geometry, eImageBufferType type, unsigned seed = 1) {
  std::mt19937 random(seed);
  return image::visitBufferType(type, [&](auto zero) {
    using T = decltype(zero);
    return makeImage(geometry, type, [&](auto...) {
      double value = static_cast<T>(random());
      if (!std::numeric_limits<T>::is_integer) {
        value = (value - 0x1p31) / (random() % 2 ? 0x1p22 : 0x1p-2);
        if (random() % 50 == 0) value *= std::numeric_limits<double>::infinity();
      }
      return value;
    });
  });
}

}  // namespace vexo::test
