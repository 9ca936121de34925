#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl1.h"

#include <cmath>
#include <functional>
#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"
#include "tools/Calls.h"

namespace vexo::imaproc::filter {
namespace {

using namespace test;

constexpr auto real32 = eImageBufferType::Real32;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
const std::string kernelClass = "vexo::imaproc::filter::DespeckleFilter2dImgLvl3";

/// Whole numbers up to 200 with a speckle here and there.
ImagePtr speckledImage(const ImageGeometry& geometry, eImageBufferType type) {
  const ImagePtr image = randomImage(geometry, type);
  forEachSample(geometry, [&](auto x, auto y, auto z, auto c, auto t) {
    const double v = getSample(*image, x, y, z, c, t);
    const bool speckle = (x * 7 + y * 13 + z) % 29 == 0;
    setSample(*image, speckle ? 120 : std::fmod(std::abs(std::floor(v)), 10), x, y, z, c, t);
  });
  return image;
}

ImagePtr run(const ImagePtr& in, std::uint32_t hx, std::uint32_t hy, double factor) {
  return boost::dynamic_pointer_cast<Image>(despeckleFilter2dImg(in, hx, hy, factor));
}

/// One pixel, by the definition: mean and deviation of the neighbours one by one.
double despeckled(const Image& in, int hx, int hy, double factor, std::size_t x, std::size_t y,
                  std::size_t z) {
  const double v = getSample(in, x, y, z);
  long double sum = 0, squares = 0, count = 0;
  for (int dy = -hy; dy <= hy; ++dy)
    for (int dx = -hx; dx <= hx; ++dx) {
      if (dx == 0 && dy == 0) continue;
      const double neighbour = getSample(in, mirrored(static_cast<std::ptrdiff_t>(x) + dx, in.getSizeX()),
                                         mirrored(static_cast<std::ptrdiff_t>(y) + dy, in.getSizeY()), z);
      sum += neighbour;
      squares += static_cast<long double>(neighbour) * neighbour;
      ++count;
    }
  const long double mean = sum / count, deviation = std::sqrt(squares / count - mean * mean);
  if (!(factor * std::abs(v - mean) > deviation)) return v;
  return in.getBufferType() == real32 ? static_cast<double>(static_cast<float>(mean))
                                      : static_cast<double>(std::trunc(mean));
}

void expectDespeckled(const Image& in, const Image& out, int hx, int hy, double factor) {
  std::size_t replaced = 0;
  forEachSample(in.getGeometry(), [&](auto x, auto y, auto z, auto, auto) {
    const double expected = despeckled(in, hx, hy, factor, x, y, z);
    replaced += expected != getSample(in, x, y, z);
    ASSERT_NEAR(getSample(out, x, y, z), expected, in.getBufferType() == real32 ? 1e-4 : 0)
        << x << " " << y << " " << z << " half " << hx << " " << hy << " factor " << factor;
  });
  if (in.getSizeX() * in.getSizeY() > 1000 && factor > 0) {
    EXPECT_GT(replaced, 10u);
  }
}

class DespeckleTypes : public ::testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, DespeckleTypes, ::testing::ValuesIn(allTypes()),
                         [](const auto& info) { return image::toString(info.param); });

// However bright it is: sums that it takes part in would lose its neighbours.
TEST_P(DespeckleTypes, ReplacesASinglePixelOfTheHighestValue) {
  const double highest = image::visitBufferType(
      GetParam(), [](auto zero) { return static_cast<double>(std::numeric_limits<decltype(zero)>::max()); });
  for (const auto& [hx, hy] : {std::pair{1, 1}, {2, 2}, {7, 3}})
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(kernelClass, sets);
      const ImagePtr flat = Image::create({71, 20}, GetParam());
      forEachSample(flat->getGeometry(), [&](auto... at) { setSample(*flat, 101, at...); });
      const ImagePtr in = copyOf(*flat);
      setSample(*in, highest, 33, 12);
      EXPECT_TRUE(
          sameBits(*run(in, static_cast<std::uint32_t>(hx), static_cast<std::uint32_t>(hy), 1), *flat))
          << hx << " " << hy << " " << core::toString(sets.getSets());
    }
}

TEST_P(DespeckleTypes, AgreesWithTheDefinition) {
  for (const auto& [hx, hy] : {std::pair{1, 1}, {2, 2}, {4, 0}, {0, 3}, {6, 1}, {9, 12}})
    for (const double factor : {0.3, 1.0}) {
      const ImagePtr in = speckledImage({67, 80, 2}, GetParam());
      const ImagePtr out = Image::create(in->getGeometry(), GetParam());
      despeckleFilter2dImg(in, hx, hy, factor, out);
      expectDespeckled(*in, *out, hx, hy, factor);
    }
}

TEST_P(DespeckleTypes, BitsDoNotDependOnHowItIsRun) {
  const ImagePtr in = speckledImage({701, 300}, GetParam());
  const ImagePtr expected = Image::create(in->getGeometry(), GetParam());
  despeckleFilter2dImg(in, 3, 2, 0.5, expected);
  for (const auto& sets : offeredSets())
    for (const std::size_t threads : {1, 2, 3, 7}) {
      const ForcedSets forced(kernelClass, sets);
      core::ActionRunner::getInstance().setThreadCount(threads);
      const ImagePtr gaps = withGaps(*in, 1), same = copyOf(*in);
      despeckleFilter2dImg(gaps, 3, 2, 0.5, gaps);
      despeckleFilter2dImg(same, 3, 2, 0.5, same);
      EXPECT_TRUE(sameBits(*gaps, *expected) && sameBits(*same, *expected)) << core::toString(sets.getSets());
    }
  core::ActionRunner::getInstance().setThreadCount(0);
}

// Wide images and tall windows, whose rows are too much to keep.
TEST(DespeckleFilter2d, LargeWindowsInPlace) {
  const ImagePtr in = speckledImage({3000, 130}, eImageBufferType::UInt8), same = copyOf(*in);
  despeckleFilter2dImg(same, 1, 50, 0.5, same);
  EXPECT_TRUE(sameBits(*same, *run(in, 1, 50, 0.5)));
}

TEST(DespeckleFilter2d, SmallImagesOnEveryInstructionSet) {
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(kernelClass, sets);
    for (std::size_t width = 1; width <= 70; ++width)
      for (const std::size_t height : {1, 4}) {
        const ImagePtr in = speckledImage({width, height}, eImageBufferType::Int16);
        const ImagePtr out = withGaps(*in, width % 3);
        despeckleFilter2dImg(in, 2, 11, 0.7, out);
        expectDespeckled(*in, *out, 2, 11, 0.7);
      }
  }
}

// No neighbours, factors that replace nothing, constant images; a bright pixel becomes what is around it.
TEST(DespeckleFilter2d, SpecialCases) {
  for (const auto type : allTypes()) {
    const ImagePtr noisy = speckledImage({50, 40}, type);
    EXPECT_TRUE(sameBits(*run(noisy, 0, 0, 5), *noisy));
    for (const double factor : {0.0, -3.0})
      EXPECT_TRUE(sameBits(*run(noisy, 2, 2, factor), *noisy)) << factor;
    const ImagePtr flat = Image::create({50, 40}, type);
    forEachSample(flat->getGeometry(), [&](auto x, auto y, auto, auto, auto) { setSample(*flat, 99, x, y); });
    EXPECT_TRUE(sameBits(*run(flat, 3, 3, 1e6), *flat));
    const ImagePtr bright = copyOf(*flat);
    setSample(*bright, 120, 20, 20);
    EXPECT_EQ(getSample(*run(bright, 2, 2, 1), 20, 20), 99) << image::toString(type);
  }
}

TEST(DespeckleFilter2d, AFactorThatIsNoNumberIsRefused) {
  const ImagePtr image = speckledImage({5, 4}, image::eImageBufferType::UInt8);
  expectFailure({"InFactor", "nan"}, [&] { run(image, 2, 2, nan); });
  expectFailure({"InFactor", "inf"}, [&] { run(image, 2, 2, std::numeric_limits<double>::infinity()); });
}

TEST(DespeckleFilter2d, NanAndInfinityKeepTheirWindowsOnly) {
  for (const double value : {nan, std::numeric_limits<double>::infinity()}) {
    const ImagePtr clean = speckledImage({90, 60}, real32), in = copyOf(*clean);
    setSample(*in, value, 40, 30);
    const auto out = run(in, 3, 2, 0.5);
    const auto cleanOut = run(clean, 3, 2, 0.5);
    forEachSample(in->getGeometry(), [&](auto x, auto y, auto, auto, auto) {
      const bool inWindow = x >= 37 && x <= 43 && y >= 28 && y <= 32;
      if (x == 40 && y == 30) return;
      EXPECT_EQ(getSample(*out, x, y), getSample(inWindow ? *in : *cleanOut, x, y)) << x << " " << y;
    });
  }
}

TEST(DespeckleFilter2d, BadCallsNameWhatIsWrongAndTouchNothing) {
  const ImagePtr in = speckledImage({20, 10}, eImageBufferType::UInt8);
  const ImagePtr larger = randomImage({20, 11}, eImageBufferType::UInt8),
                 other = randomImage({20, 10}, real32);
  const ImagePtr largerBefore = copyOf(*larger), otherBefore = copyOf(*other);
  expectFailure({"20 x 11"}, [&] { despeckleFilter2dImg(in, 1, 1, 1, larger); });
  expectFailure({"float32"}, [&] { despeckleFilter2dImg(in, 1, 1, 1, other); });
  expectFailure({"InHalfKnlSizeX", "32768"}, [&] { despeckleFilter2dImg(in, 32768, 1, 1); });
  expectFailure({"InImg"}, [&] { getAsyncProcessorOutput(despeckleFilter2dImg_async(nullptr, 1, 1, 1)); });
  EXPECT_TRUE(sameBits(*larger, *largerBefore) && sameBits(*other, *otherBefore));
  const ImagePtr given = copyOf(*in);
  getAsyncProcessorOutput(despeckleFilter2dImg_async(in, 1, 1, 0.5, given));
  const auto made = getAsyncProcessorOutput(despeckleFilter2dImg_async(in, 1, 1, 0.5));
  EXPECT_TRUE(sameBits(*given, *boost::dynamic_pointer_cast<Image>(made)));
}

}  // namespace
}  // namespace vexo::imaproc::filter
