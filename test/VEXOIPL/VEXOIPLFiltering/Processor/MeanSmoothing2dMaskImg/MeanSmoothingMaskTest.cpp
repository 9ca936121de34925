// The masked means of planes and of volumes against one direct reference.

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl1.h"
#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::imaproc::filter {
namespace {

using namespace test;

constexpr auto uint8 = eImageBufferType::UInt8, int16 = eImageBufferType::Int16,
               real32 = eImageBufferType::Real32;
constexpr int planes = -1;  ///< half size along Z of the filter of planes

ImagePtr smooth(const ImagePtr& in, const ImagePtr& mask, const Half& h, eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  const auto x = static_cast<std::uint32_t>(h.x), y = static_cast<std::uint32_t>(h.y);
  if (h.z == planes)
    meanSmoothing2dMaskImg(in, mask, x, y, out);
  else
    meanSmoothing3dMaskImg(in, mask, x, y, static_cast<std::uint32_t>(h.z), out);
  return out;
}

/// About half of the samples set, in pieces of a few, with values other than 1 and 255 too.
ImagePtr randomMask(const ImageGeometry& g) {
  const ImagePtr values = randomImage(g, uint8, 7);
  return makeImage(g, uint8, [&](auto x, auto y, auto z, auto... at) {
    const double value = getSample(*values, x, y, z, at...);
    return (x / 3 + y / 5 + z + static_cast<std::size_t>(value) % 3) % 2 == 0 ? 0 : value;
  });
}

/// Mask set: the mean in double, within rounding and the error of single-precision sums. Mask clear: exactly
/// the input's value by the saturating conversion.
void expectMaskedMean(const Image& in, const Image& mask, const Image& out, Half h) {
  h.z = std::max(h.z, 0);
  const double size = static_cast<double>(in.getSizeX() + in.getSizeY() + in.getSizeZ());
  int failures = 0;
  forEachSample(in.getGeometry(), [&](auto... at) {
    const double found = getSample(out, at...);
    double expected = converted(getSample(in, at...), out.getBufferType()), distance, allowed = 0;
    if (getSample(mask, at...) == 0) {
      const bool same = found == expected || (std::isnan(expected) && std::isnan(found));
      distance = same ? 0 : INFINITY;
    } else {
      double sum = 0, count = 0;
      const auto samples = windowOf(in, h, at...), flags = windowOf(mask, h, at...);
      for (std::size_t i = 0; i < samples.size(); ++i)
        if (flags[i] != 0) sum += samples[i], ++count;
      expected = sum / count;
      distance = distanceOnCircle(found, expected, out.getBufferType());
      allowed = 3000.0 * static_cast<double>(samples.size()) / count * 4 * size / (1 << 24);
    }
    if (!(distance <= allowed) && failures++ < 3)
      ADD_FAILURE() << testing::PrintToString(std::array{at...}) << ": " << found << " instead of "
                    << expected;
  });
}

class MeanSmoothingMask : public testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, MeanSmoothingMask, testing::ValuesIn(allTypes()), TypeName());

TEST_P(MeanSmoothingMask, EveryOutputTypeAgreesWithTheDirectMean) {
  const ImagePtr in = randomImage({45, 140}, GetParam()), mask = randomMask({45, 140});
  const ImagePtr volume = randomImage({15, 12, 35}, GetParam()), volumeMask = randomMask({15, 12, 35});
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    expectMaskedMean(*in, *mask, *smooth(in, mask, {3, 2, planes}, type), {3, 2});
    expectMaskedMean(*volume, *volumeMask, *smooth(volume, volumeMask, {2, 1, 2}, type), {2, 1, 2});
  }
}

TEST(MeanSmoothingMaskSizes, AgreeWithTheDirectMean) {
  struct Shape {
    ImageGeometry g;
    Half h;
  };
  std::vector<Shape> shapes = {
      {{1, 1}, {0, 0, planes}},     {{1, 1}, {7, 9, planes}},   {{1, 40}, {2, 3, planes}},
      {{40, 1}, {2, 3, planes}},    {{5, 4}, {13, 11, planes}}, {{30, 20}, {0, 0, planes}},
      {{30, 20}, {0, 2, planes}},   {{30, 20}, {2, 0, planes}}, {{2500, 6}, {2, 1, planes}},
      {{3, 100}, {40, 40, planes}}, {{1, 1, 1}, {2, 1, 3}},     {{9, 7, 1}, {1, 1, 2}},
      {{1, 9, 7}, {1, 1, 2}},       {{9, 1, 7}, {1, 1, 2}},     {{5, 4, 6}, {8, 9, 13}},
      {{9, 7, 20}, {0, 0, 0}},      {{9, 7, 20}, {0, 0, 2}},    {{9, 7, 20}, {2, 1, 0}},
      {{300, 5, 4}, {1, 1, 1}}};
  for (std::size_t width = 1; width <= 36; ++width)
    shapes.push_back({{width, 9}, {1 + static_cast<int>(width % 6), 2, planes}});
  for (const Shape& s : shapes)
    for (const auto type : {uint8, real32}) {
      SCOPED_TRACE(toString(s.g));
      const ImagePtr in = randomImage(s.g, type), mask = randomMask(s.g);
      expectMaskedMean(*in, *mask, *smooth(in, mask, s.h, type), s.h);
    }
}

TEST(MeanSmoothingMaskValues, ClearSetAndChequeredMasks) {
  const ImageGeometry g{50, 40, 6};
  const ImagePtr in = randomImage(g, int16);
  for (const Half& h : {Half{3, 2, planes}, Half{2, 1, 1}})
    for (const auto type : {int16, uint8, real32})
      for (const int kind : {0, 1, 2}) {
        SCOPED_TRACE(kind);
        const ImagePtr mask = makeImage(g, uint8, [&](auto x, auto y, auto z, auto...) {
          return (kind == 2 ? (x + y + z) % 2 == 0 : kind == 1) ? 255 : 0;
        });
        expectMaskedMean(*in, *mask, *smooth(in, mask, h, type), h);
      }
  const ImagePtr real = randomImage(g, real32), plain = Image::create(g, real32);
  meanSmoothing2dImg(real, 3, 2, plain);
  expectSamples(
      *smooth(real, constantImage(g, uint8, 255), {3, 2, planes}, real32),
      [&](auto... at) { return getSample(*plain, at...); }, 0.05);
}

TEST(MeanSmoothingMaskValues, NanOutsideTheMaskEntersNothingAndStays) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  const ImageGeometry g{40, 30, 5};
  const ImagePtr clean = randomImage(g, real32), mask = randomMask(g);
  const ImagePtr in = makeImage(g, real32, [&](auto x, auto y, auto... at) {
    return getSample(*mask, x, y, at...) != 0 ? getSample(*clean, x, y, at...) : (x + y) % 3 ? nan : inf;
  });
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    for (const Half& h : {Half{3, 2, planes}, Half{0, 0, planes}, Half{2, 1, 1}, Half{0, 0, 0}}) {
      expectMaskedMean(*in, *mask, *smooth(in, mask, h, real32), h);
      expectMaskedMean(*in, *mask, *smooth(in, mask, h, int16), h);
    }
  }
}

TEST(MeanSmoothingMaskValues, KeptIntegersAreExactBeyondFloats) {
  const ImagePtr in = makeImage({40, 3}, eImageBufferType::UInt32, [](auto x, auto y, auto...) {
    return 4294967295.0 - static_cast<double>(x + 40 * y);
  });
  const ImagePtr clear = constantImage({40, 3}, uint8, 0);
  for (const int hz : {planes, 1})
    EXPECT_TRUE(sameBits(*smooth(in, clear, {2, 1, hz}, eImageBufferType::UInt32), *in));
}

TEST(MeanSmoothingMaskFailures, WindowsOfTooManySamples) {
  const ImagePtr in = randomImage({20, 10, 3}, uint8);
  expectFailure({"InHalfKnlSizeZ", "4306878883"}, [&] {
    smooth(in, randomMask({20, 10, 3}), {813, 813, 813}, uint8);
  });
}

}  // namespace
}  // namespace vexo::imaproc::filter
