#pragma once

// Images for tests: their samples one at a time, as slowly and plainly as can be, random ones, and ones with
// gaps in memory. Without gtest, for the programs that have no tests.

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "VEXOImage/Border.h"
#include "VEXOImage/Image.h"

namespace vexo::test {

using image::eImageBufferType;
using image::Image;
using image::ImageGeometry;
using ImagePtr = boost::shared_ptr<Image>;

inline const std::vector<eImageBufferType>& allTypes() {
  static const std::vector<eImageBufferType> types = {
      eImageBufferType::UInt8,  eImageBufferType::Int8,  eImageBufferType::UInt16, eImageBufferType::Int16,
      eImageBufferType::UInt32, eImageBufferType::Int32, eImageBufferType::Real32};
  return types;
}

inline double getSample(const Image& image, std::size_t x, std::size_t y, std::size_t z = 0,
                        std::size_t c = 0, std::size_t t = 0) {
  return image::visitBufferType(image.getBufferType(), [&](auto zero) {
    return static_cast<double>(image.getRow<decltype(zero)>(y, z, c, t)[x]);
  });
}
inline void setSample(Image& image, double value, std::size_t x, std::size_t y, std::size_t z = 0,
                      std::size_t c = 0, std::size_t t = 0) {
  image::visitBufferType(image.getBufferType(), [&](auto zero) {
    using T = decltype(zero);
    image.getRow<T>(y, z, c, t)[x] = static_cast<T>(value);
  });
}

/// Calls visit(x, y, z, c, t) for every sample.
template <class Visit>
void forEachSample(const ImageGeometry& g, const Visit& visit) {
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < g.z; ++z)
        for (std::size_t y = 0; y < g.y; ++y)
          for (std::size_t x = 0; x < g.x; ++x) visit(x, y, z, c, t);
}
/// Calls visit(bytes, number of bytes) for every row.
template <class Visit>
void forEachRow(const Image& image, const Visit& visit) {
  ImageGeometry rows = image.getGeometry();
  rows.x = 1;
  forEachSample(rows, [&](auto, auto... at) {
    visit(image.getRow<const unsigned char>(at...), image.getSizeX() * getSampleSize(image.getBufferType()));
  });
}

template <class ValueAt>
ImagePtr makeImage(const ImageGeometry& geometry, eImageBufferType type, const ValueAt& valueAt) {
  const ImagePtr result = Image::create(geometry, type);
  forEachSample(geometry, [&](auto... at) { setSample(*result, valueAt(at...), at...); });
  return result;
}
inline ImagePtr constantImage(const ImageGeometry& geometry, eImageBufferType type, double value) {
  return makeImage(geometry, type, [&](auto...) { return value; });
}
/// Random whole numbers of a range, both ends of it included.
inline ImagePtr rangeImage(const ImageGeometry& geometry, eImageBufferType type, double low, double high,
                           unsigned seed = 1) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> value(low, high + 1);
  return makeImage(geometry, type, [&](auto...) { return std::min(std::floor(value(random)), high); });
}
/// Random samples: whole numbers within +-3000 and the type; floats within +-3000.
inline ImagePtr randomImage(const ImageGeometry& geometry, eImageBufferType type, unsigned seed = 1) {
  std::mt19937 random(seed);
  return image::visitBufferType(type, [&](auto zero) {
    using T = decltype(zero);
    std::uniform_real_distribution<double> value(
        std::max(-3000.0, static_cast<double>(std::numeric_limits<T>::lowest())),
        std::min(3000.0, static_cast<double>(std::numeric_limits<T>::max())));
    return makeImage(geometry, type,
                     [&](auto...) { return static_cast<double>(static_cast<T>(value(random))); });
  });
}
inline ImagePtr copyOf(const Image& image) {
  const ImagePtr result = Image::create(image.getGeometry(), image.getBufferType());
  image::copySamples(image, *result);
  return result;
}

/// A copy whose first sample lies `offset` samples after an aligned address, with gaps between rows, slices,
/// channels and frames.
class GapImage {
public:
  GapImage(const Image& source, std::size_t offset) {
    const ImageGeometry& g = source.getGeometry();
    const auto sample = static_cast<std::ptrdiff_t>(getSampleSize(source.getBufferType()));
    image::ImageStrides s;
    s.y = (static_cast<std::ptrdiff_t>(g.x) + 5) * sample;
    s.z = s.y * static_cast<std::ptrdiff_t>(g.y) + 3 * sample;
    s.c = s.z * static_cast<std::ptrdiff_t>(g.z) + 7 * sample;
    s.t = s.c * static_cast<std::ptrdiff_t>(g.c) + 2 * sample;
    const std::size_t start = offset * static_cast<std::size_t>(sample);
    _memory = boost::make_shared<Bytes>(static_cast<std::size_t>(s.t) * g.t + 64 + start, untouched);
    const auto address = reinterpret_cast<std::uintptr_t>(_memory->data());
    _image = Image::wrap(reinterpret_cast<void*>((address + 63) / 64 * 64 + start), g, source.getBufferType(),
                         s, _memory);
    image::copySamples(source, *_image);
  }
  const ImagePtr& get() const { return _image; }
  /// True when no byte has changed that belongs to no sample.
  bool areGapsWhole() const {
    Bytes bytes = *_memory;
    forEachRow(*_image, [&](const unsigned char* row, std::size_t size) {
      std::fill_n(bytes.begin() + (row - _memory->data()), size, untouched);
    });
    return std::all_of(bytes.begin(), bytes.end(), [](unsigned char byte) { return byte == untouched; });
  }

private:
  using Bytes = std::vector<unsigned char>;
  static constexpr unsigned char untouched = 0xa5;
  boost::shared_ptr<Bytes> _memory;
  ImagePtr _image;
};
inline ImagePtr withGaps(const Image& image, std::size_t offset) {
  return GapImage(image, offset).get();
}

/// Where the first sample lies that differs in its bits; empty when there is none.
inline std::string findDifference(const Image& a, const Image& b) {
  if (a.getGeometry() != b.getGeometry() || a.getBufferType() != b.getBufferType())
    return toString(a.getGeometry()) + " of " + toString(a.getBufferType()) + " and " +
           toString(b.getGeometry()) + " of " + toString(b.getBufferType());
  std::string found;
  const std::size_t size = getSampleSize(a.getBufferType());
  ImageGeometry rows = a.getGeometry();
  rows.x = 1;
  forEachSample(rows, [&](auto, auto... at) {
    const auto* one = a.getRow<const unsigned char>(at...);
    const auto* other = b.getRow<const unsigned char>(at...);
    if (!found.empty() || std::memcmp(one, other, a.getSizeX() * size) == 0) return;
    std::size_t x = 0;
    while (std::memcmp(one + x * size, other + x * size, size) == 0) ++x;
    found = "x " + std::to_string(x) + ", y z c t";
    for (const std::size_t position : {at...}) found += " " + std::to_string(position);
    found += ": " + std::to_string(getSample(a, x, at...)) + " and " + std::to_string(getSample(b, x, at...));
  });
  return found;
}

/// The index that stands for one outside [0, size); -1 for the constant.
inline std::ptrdiff_t foldIndex(image::eBorder border, std::ptrdiff_t i, std::size_t size) {
  const auto n = static_cast<std::ptrdiff_t>(size);
  const auto within = [&](std::ptrdiff_t period) { return (i % period + period) % period; };
  if (border == image::eBorder::Constant) return i < 0 || i >= n ? -1 : i;
  if (border == image::eBorder::Replicate) return std::clamp<std::ptrdiff_t>(i, 0, n - 1);
  if (border == image::eBorder::Circular) return within(n);
  return std::min(within(2 * n), 2 * n - 1 - within(2 * n));
}
/// The sample at a position that may lie outside the image.
inline double getBorderSample(const Image& image, const image::BorderPolicy& border, std::ptrdiff_t x,
                              std::ptrdiff_t y, std::ptrdiff_t z = 0, std::size_t c = 0, std::size_t t = 0) {
  x = foldIndex(border.getBorder(), x, image.getSizeX());
  y = foldIndex(border.getBorder(), y, image.getSizeY());
  z = foldIndex(border.getBorder(), z, image.getSizeZ());
  if (x < 0 || y < 0 || z < 0) return border.getConstant();
  return getSample(image, static_cast<std::size_t>(x), static_cast<std::size_t>(y),
                   static_cast<std::size_t>(z), c, t);
}

/// Half sizes of a window; of planes when z is 0.
struct Half {
  int x, y, z = 0;
};
/// The samples around a position, those of the mirrored image outside.
inline std::vector<double> windowOf(const Image& in, const Half& h, std::size_t x, std::size_t y,
                                    std::size_t z, std::size_t c, std::size_t t) {
  std::vector<double> window;
  const auto at = [](std::size_t p, int d, std::size_t size) {
    return static_cast<std::size_t>(
        foldIndex(image::eBorder::Mirror, static_cast<std::ptrdiff_t>(p) + d, size));
  };
  for (int dz = -h.z; dz <= h.z; ++dz)
    for (int dy = -h.y; dy <= h.y; ++dy)
      for (int dx = -h.x; dx <= h.x; ++dx)
        window.push_back(getSample(in, at(x, dx, in.getSizeX()), at(y, dy, in.getSizeY()),
                                   at(z, dz, in.getSizeZ()), c, t));
  return window;
}

/// What a value becomes in an output of a type that limits it: rounded half away from zero, 0 for NaN.
inline double converted(double value, eImageBufferType type) {
  return image::visitBufferType(type, [&](auto zero) -> double {
    using Limits = std::numeric_limits<decltype(zero)>;
    if (!Limits::is_integer) return static_cast<double>(static_cast<float>(value));
    if (std::isnan(value)) return 0;
    return std::clamp(std::round(value), static_cast<double>(Limits::lowest()),
                      static_cast<double>(Limits::max()));
  });
}
/// How far a value is from what an output must be that keeps the low bits: beyond the half step of rounding,
/// around the circle of an integer type's values.
inline double distanceOnCircle(double found, double expected, eImageBufferType type) {
  if (type == eImageBufferType::Real32) return std::abs(found - expected);
  const double circle = std::pow(2.0, 8.0 * static_cast<double>(getSampleSize(type)));
  return std::abs(std::remainder(found - expected, circle)) - 0.5;
}

}  // namespace vexo::test
