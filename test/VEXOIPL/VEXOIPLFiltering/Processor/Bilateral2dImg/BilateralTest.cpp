// The bilateral filters, whole and separated, of planes and volumes, against their definition pixel by pixel
// in single precision.
#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/Bilateral2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/MedianReference.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateral2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLvl1.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;

struct Setting {
  std::uint32_t half;
  double space, range;
};

/// One filter, with its half size given, or derived from the deviation.
struct Family {
  const char* name;
  bool separated, volumes;
  void (*fill)(const ImagePtr&, const Setting&, const ImagePtr&);
  boost::shared_ptr<image::BaseImage> (*derive)(const ImagePtr&, double, double);
};
const std::vector<Family> families = {
    {"Bilateral2d", false, false,
     [](auto& in, auto& s, auto& out) { bilateral2dImg(in, s.half, s.space, s.range, out); },
     [](auto& in, auto space, auto range) { return bilateral2dImg(in, space, range); }},
    {"Bilateral3d", false, true,
     [](auto& in, auto& s, auto& out) { bilateral3dImg(in, s.half, s.space, s.range, out); },
     [](auto& in, auto space, auto range) { return bilateral3dImg(in, space, range); }},
    {"SeparatedBilateral2d", true, false,
     [](auto& in, auto& s, auto& out) { separatedBilateral2dImg(in, s.half, s.space, s.range, out); },
     [](auto& in, auto space, auto range) { return separatedBilateral2dImg(in, space, range); }},
    {"SeparatedBilateral3d", true, true,
     [](auto& in, auto& s, auto& out) { separatedBilateral3dImg(in, s.half, s.space, s.range, out); },
     [](auto& in, auto space, auto range) { return separatedBilateral3dImg(in, space, range); }}};

ImagePtr run(const Family& family, const ImagePtr& in, const Setting& s, eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  family.fill(in, s, out);
  return out;
}

/// The weight of a difference in value, by its bin.
class RangeWeight {
public:
  RangeWeight(const Image& in, double sigma) : _sigma(sigma) {
    if (getSampleSize(in.getBufferType()) == 1) return;
    double low = INFINITY, high = -INFINITY;
    forEachSample(in.getGeometry(), [&](auto... at) {
      low = std::min(low, getSample(in, at...));
      high = std::max(high, getSample(in, at...));
    });
    const bool real = in.getBufferType() == eImageBufferType::Real32;
    const double range = high - low + (real ? 0 : 1);
    _bins = real || range >= 65536 ? 65536 : static_cast<int>(range);
    if (real || range >= 65536) _scale = static_cast<float>(65536 / range);
  }
  float operator()(float v, float c) const {
    if (!(_scale < INFINITY)) return 1;  // a constant image: each difference has the first bin
    const float bin = std::min(std::trunc(std::abs(v - c) * _scale), static_cast<float>(_bins - 1));
    const float difference = bin / _scale;
    const double coefficient = -0.5 / (_sigma * _sigma);
    const float weight = _sigma < 1e18
                             ? std::exp(difference * difference * static_cast<float>(coefficient))
                             : static_cast<float>(std::exp(std::pow(double(difference), 2) * coefficient));
    return weight < std::numeric_limits<float>::min() ? 0 : weight;
  }

private:
  double _sigma;
  float _scale = 1;
  int _bins = 256;
};
float spaceWeight(int squared, double sigma) {
  return static_cast<float>(std::exp(squared * (-0.5 / (sigma * sigma))));
}

/// A sample as a filter reads it, at a place that may lie outside.
float valueAt(const Image& in, std::array<std::size_t, 5> p, int dx, int dy, int dz) {
  const auto at = [&](int axis, int d) {
    return static_cast<std::ptrdiff_t>(p[static_cast<std::size_t>(axis)]) + d;
  };
  return static_cast<float>(
      getBorderSample(in, *image::mirorBorder2d(), at(0, dx), at(1, dy), at(2, dz), p[3], p[4]));
}

ImagePtr wholeReference(const Image& in, const Family& f, const Setting& s, eImageBufferType type) {
  const RangeWeight rangeWeight(in, s.range);
  const int h = static_cast<int>(s.half), hz = f.volumes ? h : 0;
  return makeImage(in.getGeometry(), type, [&](auto... at) {
    const float c = valueAt(in, {at...}, 0, 0, 0);
    float sum = 0, weights = 0;
    for (int dz = -hz; dz <= hz; ++dz)
      for (int dy = -h; dy <= h; ++dy)
        for (int dx = -h; dx <= h; ++dx) {
          const float v = valueAt(in, {at...}, dx, dy, dz);
          const float w = rangeWeight(v, c) * spaceWeight(dx * dx + dy * dy + dz * dz, s.space);
          weights += w;
          sum += w * v;
        }
    return converted(sum / weights, type);
  });
}

ImagePtr separatedReference(const Image& in, const Family& f, const Setting& s, eImageBufferType type) {
  const RangeWeight rangeWeight(in, s.range);
  ImagePtr from = copyOf(in);
  for (int axis = 0; axis < (f.volumes ? 3 : 2); ++axis)
    from = makeImage(in.getGeometry(), type, [&, from](auto... at) {
      const float c = valueAt(*from, {at...}, 0, 0, 0);
      float sum = c, weights = 1;
      for (const int side : {1, -1}) {
        float least = 1;
        for (int d = 1; d <= static_cast<int>(s.half); ++d) {
          const int step = side * d;
          const float v =
              valueAt(*from, {at...}, axis == 0 ? step : 0, axis == 1 ? step : 0, axis == 2 ? step : 0);
          least = std::min(least, rangeWeight(v, c));
          const float w = spaceWeight(d * d, s.space) * least;
          weights += w;
          sum += w * v;
        }
      }
      return converted(sum / weights, type);
    });
  return from;
}

ImagePtr reference(const Image& in, const Family& f, const Setting& s, eImageBufferType type) {
  return f.separated ? separatedReference(in, f, s, type) : wholeReference(in, f, s, type);
}

/// A step with noise and some samples far off: near `low` on the left, near `high` on the right.
ImagePtr stepImage(const ImageGeometry& geometry, eImageBufferType type, double low, double high) {
  std::mt19937 random(11);
  std::normal_distribution<double> noise(0, (high - low) / 20);
  return makeImage(geometry, type, [&](auto x, auto...) {
    double value = (x < geometry.x / 2 ? low : high) + noise(random);
    if (random() % 20 == 0) value = low + high - value;
    return converted(type == eImageBufferType::Real32 ? value + 0.25 : value, type);
  });
}

/// A few values of each type: up to 255 bins, up to 65536, and beyond.
std::vector<std::pair<double, double>> stepsOf(eImageBufferType type) {
  switch (type) {
    case eImageBufferType::UInt8:
      return {{40, 200}};
    case eImageBufferType::Int8:
      return {{-90, 80}};
    case eImageBufferType::UInt16:
      return {{30000, 30100}, {5000, 60000}};
    case eImageBufferType::Int16:
      return {{-50, 60}, {-32000, 32000}};
    case eImageBufferType::UInt32:
      return {{4e9, 4.0001e9}, {0, 4294967295.0}};
    case eImageBufferType::Int32:
      return {{-100, 100}, {-2147483648.0, 2147483647.0}};
    default:
      return {{-0.5, 0.5}, {-1e30, 1e30}};
  }
}

/// Runs a test under each instruction set.
template <class Test>
void forEachSet(const Test& test) {
  for (const auto& sets : offeredSets()) {
    SCOPED_TRACE(core::toString(sets.getSets()));
    const ForcedSets forced(sets);
    test();
  }
}

class Bilateral : public testing::TestWithParam<std::tuple<std::size_t, eImageBufferType>> {
protected:
  const Family& family() const { return families[std::get<0>(GetParam())]; }
  eImageBufferType type() const { return std::get<1>(GetParam()); }
  ImagePtr run(const ImagePtr& in, const Setting& s, eImageBufferType out) const {
    return filter::run(family(), in, s, out);
  }
  ImagePtr derive(const ImagePtr& in, double space, double range) const {
    return boost::dynamic_pointer_cast<Image>(family().derive(in, space, range));
  }
};
INSTANTIATE_TEST_SUITE_P(All, Bilateral,
                         testing::Combine(testing::Range(std::size_t{0}, families.size()),
                                          testing::ValuesIn(allTypes())),
                         [](const auto& info) {
                           return families[std::get<0>(info.param)].name + std::string("_") +
                                  image::toString(std::get<1>(info.param));
                         });

TEST_P(Bilateral, EveryOutputTypeAndInstructionSetFollowsTheDefinition) {
  for (const auto& [low, high] : stepsOf(type())) {
    const ImagePtr in = stepImage({43, 14, 3, 1, 2}, type(), low, high);
    const Setting s = {2, 1.3, (high - low) / 6};
    for (const auto out : allTypes()) {
      const ImagePtr expected = reference(*in, family(), s, out);
      forEachSet([&] { EXPECT_TRUE(sameBits(*run(in, s, out), *expected)) << image::toString(out); });
    }
  }
}

TEST_P(Bilateral, EverySizeOfWindowAndImage) {
  std::vector<std::pair<ImageGeometry, std::uint32_t>> cases;
  for (const ImageGeometry& shape :
       {ImageGeometry{1, 1}, {1, 6, 2}, {300, 3}, {7, 5, 4}, {3, 150}, {5, 80, 3}})
    for (const std::uint32_t half : {1u, 6u}) cases.emplace_back(shape, half);
  if (family().separated)
    for (const ImageGeometry& shape : {ImageGeometry{250, 3}, {3, 150}, {2, 3, 90}})
      for (const std::uint32_t half : {40u, 70u}) cases.emplace_back(shape, half);
  else if (!family().volumes)
    cases.insert(cases.end(), {{{7, 5, 4}, 20}, {{3, 1}, 520}});
  for (const auto& [shape, half] : cases) {
    const auto [low, high] = stepsOf(type())[0];
    const ImagePtr in = stepImage(shape, type(), low, high);
    const Setting s = {half, half / 2.0, (high - low) / 3};
    const ImagePtr expected = reference(*in, family(), s, type());
    SCOPED_TRACE(toString(shape) + ", half " + std::to_string(half));
    forEachSet([&] { EXPECT_TRUE(sameBits(*run(in, s, type()), *expected)); });
  }
}

// 1.5 deviations, rounded.
TEST_P(Bilateral, TheHalfSizeIsDerivedFromTheDeviation) {
  const ImagePtr in = stepImage({43, 14, 3}, type(), stepsOf(type())[0].first, stepsOf(type())[0].second);
  for (const auto& [space, half] : {std::pair(1.0, 2u), {1.2, 2u}, {1.4, 2u}, {0.9, 1u}, {2.0, 3u}})
    EXPECT_TRUE(sameBits(*derive(in, space, 20), *run(in, {half, space, 20}, type()))) << space;
  EXPECT_TRUE(sameBits(*derive(in, 0.2, 5), *in));
  EXPECT_TRUE(sameBits(*derive(in, -7, NAN), *in));
}

// Whatever the tables become: a value of each type, and no crash.
TEST_P(Bilateral, DegenerateDeviationsAndConstantImages) {
  const auto [low, high] = stepsOf(type()).back();
  const ImagePtr in = stepImage({40, 9}, type(), low, high), constant = constantImage({40, 9}, type(), low);
  forEachSet([&] {
    EXPECT_TRUE(sameBits(*run(in, {2, -1.3, -20}, type()), *run(in, {2, 1.3, 20}, type())));
    EXPECT_NEAR(getSample(*run(constant, {2, 1.3, 20}, type()), 9, 4), low, std::abs(low) * 1e-6);
    // Nothing but the centre counts, or not even that.
    EXPECT_TRUE(sameBits(*run(in, {2, 1e-30, 1e30}, type()), *run(in, {2, 1e-30, 1}, type())));
    for (const Setting s : {Setting{1, 0, 20}, {1, NAN, 1}, {1, 1, 0}, {1, 1, NAN}}) {
      const double result = getSample(*run(in, s, type()), 20, 4), centre = getSample(*in, 20, 4);
      const bool centreCounts = family().separated && !std::isnan(s.space);
      if (centreCounts) {
        EXPECT_TRUE(s.space != 0 || result == static_cast<float>(centre)) << s.space << " " << s.range;
        EXPECT_FALSE(std::isnan(result)) << s.space << " " << s.range;
      } else {
        EXPECT_TRUE(type() == eImageBufferType::Real32 ? std::isnan(result) : result == 0)
            << s.space << " " << s.range;
      }
    }
  });
}

// A window of one sample keeps 32-bit integers as they are, also in other integers.
TEST_P(Bilateral, SingleSamplesAreConvertedWithAllTheirBits) {
  const ImagePtr in = wideImage({30, 20, 2}, type());
  for (const auto out : allTypes()) {
    SCOPED_TRACE(image::toString(out));
    expectSamples(*run(in, {0, 0.2, 5}, out),
                  [&](auto... at) { return converted(getSample(*in, at...), out); });
  }
}

class BilateralOfFloats : public Bilateral {};
INSTANTIATE_TEST_SUITE_P(All, BilateralOfFloats,
                         testing::Combine(testing::Range(std::size_t{0}, families.size()),
                                          testing::Values(eImageBufferType::Real32)),
                         [](const auto& info) { return families[std::get<0>(info.param)].name; });

TEST_P(BilateralOfFloats, NanSpoilsItsWindowsAndNoOthers) {
  const ImagePtr in = stepImage({60, 40}, type(), -1, 1);
  setSample(*in, NAN, 30, 20);
  forEachSet([&] {
    const ImagePtr out = run(in, {2, 1, 1}, type()), whole = run(in, {2, 1, 1}, eImageBufferType::UInt8);
    forEachSample(in->getGeometry(), [&](auto x, auto y, auto... at) {
      const bool near = x >= 28 && x <= 32 && y >= 18 && y <= 22;
      EXPECT_EQ(std::isnan(getSample(*out, x, y, at...)), near) << x << " " << y;
      if (near && !family().separated) {  // whose passes after the first find 0 in place of NaN
        EXPECT_EQ(getSample(*whole, x, y, at...), 0);
      }
    });
  });
}

TEST_P(BilateralOfFloats, InfinitiesAndHugeRanges) {
  const ImagePtr in = stepImage({60, 40}, type(), -1, 1), huge = stepImage({60, 40}, type(), -3e38, 3e38);
  setSample(*in, INFINITY, 3, 4);
  setSample(*in, -INFINITY, 50, 30);
  const ImagePtr expected = run(huge, {1, 1, 1e37}, type());  // sums overflow, alike everywhere
  forEachSet([&] {
    EXPECT_FALSE(std::isnan(getSample(*run(in, {2, 1, 1}, type()), 30, 20)));
    EXPECT_TRUE(sameBits(*run(huge, {1, 1, 1e37}, type()), *expected));
  });
}

// Tables of up to 256 bins may be looked up in another way than larger ones.
TEST(BilateralTables, OfEachSizeAreReadToTheirEnd) {
  for (const int levels : {1, 2, 255, 256, 257, 300})
    for (const Family& family : families) {
      const ImagePtr in = makeImage({60, 9, 2}, eImageBufferType::UInt16, [&](auto x, auto y, auto...) {
        return 700 + (x % 2 == 0 ? 0 : levels - 1 - int(y) % levels);
      });
      SCOPED_TRACE(std::string(family.name) + ", " + std::to_string(levels) + " levels");
      const ImagePtr expected = reference(*in, family, {1, 1, 100}, eImageBufferType::Real32);
      forEachSet([&] {
        EXPECT_TRUE(sameBits(*run(family, in, {1, 1, 100}, eImageBufferType::Real32), *expected));
      });
    }
}

// Differences that are no floats, and bins far narrower than a grey level.
TEST(BilateralTables, FollowTheirDefinitionForAnyDeviation) {
  for (const Family& family : families)
    for (const auto& [low, high, range] :
         {std::tuple(0.0, 2.0, 1e-3), {0.0, 2.0, 1e-6}, {-1e38, 1e38, 1e20}}) {
      const ImagePtr in = stepImage({43, 9, 2}, eImageBufferType::Real32, low, high);
      EXPECT_TRUE(sameBits(*run(family, in, {2, 1, range}, eImageBufferType::Real32),
                           *reference(*in, family, {2, 1, range}, eImageBufferType::Real32)))
          << family.name << " " << range;
    }
}

TEST(BilateralFailures, WindowsOfTooManySamples) {
  const ImagePtr in = randomImage({20, 10}, eImageBufferType::UInt8);
  for (const Family& family : families)
    if (!family.separated)
      expectFailure({"InOptHalfKnlSize", "9000", "268435456"}, [&] {
        run(family, in, {9000, 1, 1}, eImageBufferType::UInt8);
      });
}

}  // namespace
}  // namespace vexo::imaproc::filter
