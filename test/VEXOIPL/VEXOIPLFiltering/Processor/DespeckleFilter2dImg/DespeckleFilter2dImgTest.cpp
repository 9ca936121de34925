#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl1.h"

#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::imaproc::filter {
namespace {

using namespace test;

constexpr auto real32 = eImageBufferType::Real32;

/// Small whole numbers with a speckle here and there.
ImagePtr speckledImage(const ImageGeometry& geometry, eImageBufferType type) {
  const ImagePtr image = rangeImage(geometry, type, 0, 9);
  forEachSample(geometry, [&](auto x, auto y, auto z, auto... at) {
    if ((x * 7 + y * 13 + z) % 29 == 0) setSample(*image, 120, x, y, z, at...);
  });
  return image;
}

ImagePtr run(const ImagePtr& in, const Half& h, double factor) {
  return boost::dynamic_pointer_cast<Image>(
      despeckleFilter2dImg(in, static_cast<std::uint32_t>(h.x), static_cast<std::uint32_t>(h.y), factor));
}

/// By the definition: mean and deviation of the neighbours one by one.
void expectDespeckled(const ImagePtr& in, const Half& h, double factor) {
  SCOPED_TRACE(toString(in->getGeometry()) + ", half " + std::to_string(h.x) + " " + std::to_string(h.y));
  std::size_t replaced = 0;
  const auto expectedAt = [&](auto... at) {
    const double v = getSample(*in, at...);
    std::vector<double> neighbours = windowOf(*in, h, at...);
    neighbours.erase(neighbours.begin() + static_cast<std::ptrdiff_t>(neighbours.size() / 2));
    long double sum = 0, squares = 0;
    for (const double neighbour : neighbours) {
      sum += neighbour;
      squares += static_cast<long double>(neighbour) * neighbour;
    }
    const auto count = static_cast<long double>(neighbours.size());
    const long double mean = sum / count, deviation = std::sqrt(squares / count - mean * mean);
    if (!(factor * std::abs(v - mean) > deviation)) return v;
    ++replaced;
    return static_cast<double>(in->getBufferType() == real32 ? static_cast<float>(mean) : std::trunc(mean));
  };
  expectSamples(*run(in, h, factor), expectedAt, in->getBufferType() == real32 ? 1e-4 : 0);
  if (in->getSizeX() * in->getSizeY() > 1000) {
    EXPECT_GT(replaced, 10u);
  }
}

class Despeckle : public testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, Despeckle, testing::ValuesIn(allTypes()), TypeName());

TEST_P(Despeckle, AgreesWithTheDefinition) {
  for (const Half& h : {Half{1, 1}, {2, 2}, {4, 0}, {0, 3}, {6, 1}, {9, 12}})
    for (const double factor : {0.3, 1.0})
      expectDespeckled(speckledImage({67, 80, 2}, GetParam()), h, factor);
}

// However bright it is: sums that it takes part in would lose its neighbours.
TEST_P(Despeckle, ReplacesASinglePixelOfTheHighestValue) {
  const ImagePtr flat = constantImage({71, 20}, GetParam(), 101), in = copyOf(*flat);
  setSample(*in,
            image::visitBufferType(
                GetParam(),
                [](auto zero) { return static_cast<double>(std::numeric_limits<decltype(zero)>::max()); }),
            33, 12);
  for (const Half& h : {Half{1, 1}, {2, 2}, {7, 3}})
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(sets);
      EXPECT_TRUE(sameBits(*run(in, h, 1), *flat))
          << h.x << " " << h.y << " " << core::toString(sets.getSets());
    }
}

// No neighbours, factors that replace nothing, constant images; a bright pixel becomes what is around it.
TEST_P(Despeckle, SpecialCases) {
  const ImagePtr noisy = speckledImage({50, 40}, GetParam());
  EXPECT_TRUE(sameBits(*run(noisy, {0, 0}, 5), *noisy));
  for (const double factor : {0.0, -3.0})
    EXPECT_TRUE(sameBits(*run(noisy, {2, 2}, factor), *noisy)) << factor;
  const ImagePtr flat = constantImage({50, 40}, GetParam(), 99), bright = copyOf(*flat);
  EXPECT_TRUE(sameBits(*run(flat, {3, 3}, 1e6), *flat));
  setSample(*bright, 120, 20, 20);
  EXPECT_EQ(getSample(*run(bright, {2, 2}, 1), 20, 20), 99);
}

TEST(DespeckleSizes, SmallImagesAndTallWindows) {
  for (std::size_t width = 1; width <= 70; ++width)
    for (const std::size_t height : {1, 4})
      expectDespeckled(speckledImage({width, height}, eImageBufferType::Int16), {2, 11}, 0.7);
}

// Wide images and tall windows, whose rows are too much to keep.
TEST(DespeckleSizes, LargeWindowsInPlace) {
  const ImagePtr in = speckledImage({3000, 130}, eImageBufferType::UInt8), same = copyOf(*in);
  despeckleFilter2dImg(same, 1, 50, 0.5, same);
  EXPECT_TRUE(sameBits(*same, *run(in, {1, 50}, 0.5)));
}

TEST(DespeckleValues, NanAndInfinityKeepTheirWindowsOnly) {
  const ImagePtr clean = speckledImage({90, 60}, real32), in = copyOf(*clean);
  const ImagePtr cleanOut = run(clean, {3, 2}, 0.5);
  for (const double value :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    setSample(*in, value, 40, 30);
    const ImagePtr out = run(in, {3, 2}, 0.5);
    setSample(*out, value, 40, 30);
    expectSamples(*out, [&](auto x, auto y, auto... at) {
      const bool inWindow = x >= 37 && x <= 43 && y >= 28 && y <= 32;
      return getSample(inWindow ? *in : *cleanOut, x, y, at...);
    });
  }
}

}  // namespace
}  // namespace vexo::imaproc::filter
