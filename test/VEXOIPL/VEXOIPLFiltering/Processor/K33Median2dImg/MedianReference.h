#pragma once

// What the tests of the medians share: windows sample by sample, values in another type, images.

#include <algorithm>
#include <cmath>
#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"

namespace vexo::test {

/// The samples around a position, those of the mirrored image outside.
inline std::vector<double> windowOf(const Image& in, int hx, int hy, int hz, std::size_t x, std::size_t y,
                                    std::size_t z, std::size_t c, std::size_t t) {
  std::vector<double> window;
  const auto at = [](std::size_t p, int d, std::size_t n) {
    return mirrored(static_cast<std::ptrdiff_t>(p) + d, n);
  };
  for (int dz = -hz; dz <= hz; ++dz)
    for (int dy = -hy; dy <= hy; ++dy)
      for (int dx = -hx; dx <= hx; ++dx)
        window.push_back(getSample(in, at(x, dx, in.getSizeX()), at(y, dy, in.getSizeY()),
                                   at(z, dz, in.getSizeZ()), c, t));
  return window;
}

inline double middleOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// What a value becomes in an output of a type: limited and rounded half away from zero.
inline double converted(double value, eImageBufferType type) {
  return image::visitBufferType(type, [&](auto zero) -> double {
    using Limits = std::numeric_limits<decltype(zero)>;
    if (!Limits::is_integer) return static_cast<double>(static_cast<float>(value));
    return std::clamp(std::round(value), static_cast<double>(Limits::lowest()),
                      static_cast<double>(Limits::max()));
  });
}

/// Samples over the whole range of the type, some far from the others; floats with fractions, and infinities.
inline ImagePtr wideImage(const ImageGeometry& geometry, eImageBufferType type, unsigned seed = 1) {
  const ImagePtr result = Image::create(geometry, type);
  std::mt19937 random(seed);
  image::visitBufferType(type, [&](auto zero) {
    using T = decltype(zero);
    forEachSample(geometry, [&](auto... at) {
      double value = static_cast<T>(random());
      if (!std::numeric_limits<T>::is_integer) {
        value = (value - 0x1p31) / (random() % 2 ? 0x1p22 : 0x1p-2);
        if (random() % 50 == 0) value *= std::numeric_limits<double>::infinity();
      }
      setSample(*result, value, at...);
    });
  });
  return result;
}

}  // namespace vexo::test
