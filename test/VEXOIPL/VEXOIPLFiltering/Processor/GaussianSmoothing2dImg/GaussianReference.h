#pragma once

// What a Gaussian smoothing must give, computed in double with bounds; shared by the 2d and 3d tests.

#include <array>

#include "VEXOProcessing/Attributes.h"
#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::test {

/// One pass: the axis (0 = x) and its deviation.
struct GaussianPass {
  std::size_t axis;
  double stdDev;
};

/// The mirrored Gaussian of the default coverage. Single-precision sums may fall to either side of a half, so
/// each pass yields an interval, rounded at both ends; nearly all intervals of integer outputs are one value.
class GaussianReference {
public:
  GaussianReference(const Image& in, eImageBufferType outType, const std::vector<GaussianPass>& passes,
                    double coverage = 0.997, int maxHalf = 0)
      : _geometry(in.getGeometry()), _type(outType) {
    forEachSample(_geometry, [&](auto x, auto y, auto z, auto c, auto t) {
      const double value = getSample(in, x, y, z, c, t);
      _bounds.push_back({value, value});
    });
    for (const GaussianPass& pass : passes) apply(pass, coverage, maxHalf);
  }

  void expect(const Image& out) const {
    ASSERT_EQ(out.getGeometry(), _geometry);
    ASSERT_EQ(out.getBufferType(), _type);
    int failures = 0;
    forEachSample(_geometry, [&](auto x, auto y, auto z, auto c, auto t) {
      const double value = getSample(out, x, y, z, c, t);
      const Bounds& bounds = _bounds[indexOf({x, y, z, c, t})];
      if (!(value >= bounds.low && value <= bounds.high) && failures++ < 3)
        ADD_FAILURE() << "x " << x << " y " << y << " z " << z << " c " << c << " t " << t << ": " << value
                      << " is not in [" << bounds.low << ", " << bounds.high << "]";
    });
  }

  /// The part of the samples whose value is certain.
  double exactPart() const {
    std::size_t exact = 0;
    for (const Bounds& bounds : _bounds) exact += bounds.low == bounds.high;
    return static_cast<double>(exact) / static_cast<double>(_bounds.size());
  }

private:
  struct Bounds {
    double low, high;
  };
  using Position = std::array<std::size_t, 5>;

  std::size_t indexOf(const Position& p) const {
    return p[0] + _geometry.x * (p[1] + _geometry.y * (p[2] + _geometry.z * (p[3] + _geometry.c * p[4])));
  }

  void apply(const GaussianPass& pass, double coverage, int maxHalf) {
    const double s = pass.stdDev;
    int half = 0;
    if (s > 0) {
      half = 1;
      while (half != maxHalf && std::erf(half / (s * std::sqrt(2.0))) < coverage) ++half;
    }
    std::vector<double> weights;
    double sum = 0;
    for (int d = -half; d <= half; ++d) {
      weights.push_back(d == 0 ? 1 : std::exp(-0.5 * d * d / (s * s)));
      sum += weights.back();
    }
    const std::size_t sizes[] = {_geometry.x, _geometry.y, _geometry.z};
    std::vector<Bounds> result;
    forEachSample(_geometry, [&](auto x, auto y, auto z, auto c, auto t) {
      const Position centre = {x, y, z, c, t};
      Bounds total = {0, 0};
      double magnitude = 0;
      for (int d = -half; d <= half; ++d) {
        Position at = centre;
        at[pass.axis] = static_cast<std::size_t>(foldIndex(
            image::eBorder::Mirror, static_cast<std::ptrdiff_t>(centre[pass.axis]) + d, sizes[pass.axis]));
        const Bounds& value = _bounds[indexOf(at)];
        const double weight = weights[static_cast<std::size_t>(half + d)] / sum;
        total.low += weight * value.low;
        total.high += weight * value.high;
        magnitude += weight * std::max(std::abs(value.low), std::abs(value.high));
      }
      // Each of the additions, the weights, the sample, the division and the result are rounded to float.
      const double error =
          (half == 0 ? 0 : (2 * half + 6) * magnitude / (1 << 24)) + conversionError(magnitude);
      result.push_back(stored({total.low - error, total.high + error}));
    });
    _bounds = std::move(result);
  }

  /// Of a sample that single precision does not hold.
  static double conversionError(double magnitude) {
    return magnitude > (1 << 24) ? 2 * magnitude / (1 << 24) : 0;
  }

  /// Rounded half away from zero, with the low bits kept.
  Bounds stored(const Bounds& bounds) const {
    return image::visitBufferType(_type, [&](auto zero) -> Bounds {
      using T = decltype(zero);
      if constexpr (std::is_same_v<T, float>) {
        return bounds;
      } else {
        const auto low = static_cast<std::int64_t>(std::round(bounds.low));
        const auto high = static_cast<std::int64_t>(std::round(bounds.high));
        const Bounds kept = {static_cast<double>(static_cast<T>(low)),
                             static_cast<double>(static_cast<T>(high))};
        // The interval reaches over the end of the type: any value may come out.
        if (kept.high - kept.low != static_cast<double>(high - low))
          return {static_cast<double>(std::numeric_limits<T>::min()),
                  static_cast<double>(std::numeric_limits<T>::max())};
        return kept;
      }
    });
  }

  ImageGeometry _geometry;
  eImageBufferType _type;
  std::vector<Bounds> _bounds;
};

inline boost::shared_ptr<const imaproc::attr::GaussianCoverage> gaussianCoverage(float coverage = 0.997f,
                                                                                 std::uint32_t maxHalf = 0) {
  return boost::make_shared<const imaproc::attr::GaussianCoverage>(coverage, maxHalf);
}

}  // namespace vexo::test
