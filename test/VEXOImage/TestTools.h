#pragma once

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Calls.h"
#include "VEXOImage/Border.h"
#include "VEXOImage/Image.h"

namespace vexo::test {

// Samples as doubles, whatever their type. One at a time through the strides, as slowly and plainly as can
// be.
inline double getSample(const image::Image& image, std::size_t x, std::size_t y, std::size_t z = 0,
                        std::size_t c = 0, std::size_t t = 0) {
  return image::visitBufferType(image.getBufferType(), [&](auto zero) -> double {
    return image.getRow<decltype(zero)>(y, z, c, t)[x];
  });
}
inline void setSample(image::Image& image, double value, std::size_t x, std::size_t y, std::size_t z = 0,
                      std::size_t c = 0, std::size_t t = 0) {
  image::visitBufferType(image.getBufferType(), [&](auto zero) {
    using T = decltype(zero);
    image.getRow<T>(y, z, c, t)[x] = static_cast<T>(value);
  });
}

/// Calls visit(x, y, z, c, t) for every sample.
template <class Visit>
void forEachSample(const image::ImageGeometry& g, const Visit& visit) {
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < g.z; ++z)
        for (std::size_t y = 0; y < g.y; ++y)
          for (std::size_t x = 0; x < g.x; ++x) visit(x, y, z, c, t);
}

/// Whole numbers from 0 to `most`, so that sums of some hundreds are exact in float.
inline void fillRandom(image::Image& image, unsigned seed, int most = 9) {
  std::mt19937 random(seed);
  forEachSample(image.getGeometry(), [&](auto... at) {
    setSample(image, static_cast<double>(random() % static_cast<unsigned>(most + 1)), at...);
  });
}
inline boost::shared_ptr<image::Image> makeRandom(const image::ImageGeometry& geometry,
                                                  image::eImageBufferType type, unsigned seed, int most = 9) {
  const auto image = image::Image::create(geometry, type);
  fillRandom(*image, seed, most);
  return image;
}
inline boost::shared_ptr<image::Image> makeCopy(const image::Image& image) {
  const auto copy = image::Image::create(image.getGeometry(), image.getBufferType());
  forEachSample(image.getGeometry(), [&](auto... at) { setSample(*copy, getSample(image, at...), at...); });
  return copy;
}
inline testing::AssertionResult sameSamples(const image::Image& a, const image::Image& b) {
  if (a.getGeometry() != b.getGeometry()) return testing::AssertionFailure() << "the sizes differ";
  std::size_t different = 0;
  std::string first;
  forEachSample(a.getGeometry(), [&](auto... at) {
    if (getSample(a, at...) == getSample(b, at...)) return;
    if (different++ == 0) {
      for (const std::size_t i : {at...}) first += std::to_string(i) + " ";
      first += ": " + std::to_string(getSample(a, at...)) + " and " + std::to_string(getSample(b, at...));
    }
  });
  if (different == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << different << " samples differ, first " << first;
}

/// Folds an index into [0, n) one period after the other; -1 for the constant.
inline std::ptrdiff_t foldIndex(image::eBorder border, std::ptrdiff_t i, std::ptrdiff_t n) {
  while (i < 0 || i >= n) {
    if (border == image::eBorder::Constant) return -1;
    if (border == image::eBorder::Replicate) i += i < 0 ? 1 : -1;
    if (border == image::eBorder::Circular) i += i < 0 ? n : -n;
    if (border == image::eBorder::Mirror) i = (i < 0 ? 0 : 2 * n) - 1 - i;
  }
  return i;
}
/// The sample at a position that may lie outside the image.
inline double getBorderSample(const image::Image& image, const image::BorderPolicy& border, std::ptrdiff_t x,
                              std::ptrdiff_t y, std::ptrdiff_t z = 0, std::size_t c = 0, std::size_t t = 0) {
  x = foldIndex(border.getBorder(), x, static_cast<std::ptrdiff_t>(image.getSizeX()));
  y = foldIndex(border.getBorder(), y, static_cast<std::ptrdiff_t>(image.getSizeY()));
  z = foldIndex(border.getBorder(), z, static_cast<std::ptrdiff_t>(image.getSizeZ()));
  if (x < 0 || y < 0 || z < 0) return border.getConstant();
  return getSample(image, static_cast<std::size_t>(x), static_cast<std::size_t>(y),
                   static_cast<std::size_t>(z), c, t);
}

}  // namespace vexo::test
