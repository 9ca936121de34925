#include "VEXOIPL/VEXOIPLFiltering/Median/HistogramMedian.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/ToSample.h"

namespace vexo::imaproc::filter {
namespace {

template <class TIn>
LevelMap mapOf(double minimum, double maximum, image::eImageBufferType output) {
  using Limits = std::numeric_limits<TIn>;
  LevelMap map = {};
  if (Limits::is_integer) {
    minimum = std::trunc(minimum);
    maximum = std::trunc(maximum);
  }
  map.exact = Limits::is_integer && maximum - minimum <= 255;
  const double width = maximum - minimum + 1.0, step = map.exact ? 1.0 : width * 0.00390625;
  map.minimum = minimum;
  map.scale = 256.0 / width;
  if constexpr (Limits::is_integer) {
    const TIn first = toSample<TIn>(minimum);
    map.first = static_cast<long long>(first);
    map.offset = static_cast<unsigned>(std::clamp(static_cast<double>(first) - minimum, 0.0, 255.0));
  }
  image::visitBufferType(output, [&](auto zero) {
    using TOut = decltype(zero);
    for (int level = 0; level < 256; ++level) {
      const double value = minimum + level * step;
      const TOut sample = toSample<TOut>(Limits::is_integer ? std::trunc(value) : static_cast<float>(value));
      std::memcpy(map.samples + static_cast<std::size_t>(level) * sizeof sample, &sample, sizeof sample);
    }
  });
  return map;
}

}  // namespace

LevelMap makeLevelMap(const attr::Range& range, image::eImageBufferType input,
                      image::eImageBufferType output) {
  constexpr double largest = std::numeric_limits<float>::max();
  const double minimum = std::clamp(range.minimum.getValue(), -largest, largest);
  const double maximum = std::clamp(range.maximum.getValue(), -largest, largest);
  return image::visitBufferType(input,
                                [&](auto zero) { return mapOf<decltype(zero)>(minimum, maximum, output); });
}

}  // namespace vexo::imaproc::filter
