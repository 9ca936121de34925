#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"

#include <cmath>
#include <limits>
#include <thread>

#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;

const char* const kernelClass = "vexo::imaproc::filter::MeanSmoothing2dImgLvl3";

/// The window sum in double, sample by sample.
double directMean(const Image& in, std::size_t x, std::size_t y, std::size_t z, std::size_t c, std::size_t t,
                  int hx, int hy) {
  double sum = 0;
  for (int dy = -hy; dy <= hy; ++dy)
    for (int dx = -hx; dx <= hx; ++dx)
      sum += getSample(in, mirrored(static_cast<std::ptrdiff_t>(x) + dx, in.getSizeX()),
                       mirrored(static_cast<std::ptrdiff_t>(y) + dy, in.getSizeY()), z, c, t);
  return sum / ((2.0 * hx + 1) * (2.0 * hy + 1));
}

/// How far a result may be from the direct mean: half a step of rounding, and the error of single-precision
/// sums.
void expectMean(const Image& in, const Image& out, int hx, int hy) {
  const double sums = 3000.0 * 4 * static_cast<double>(in.getSizeX() + in.getSizeY()) / (1 << 24);
  const bool real = out.getBufferType() == eImageBufferType::Real32;
  // Integer outputs keep the low bits: distances are taken around the circle of their values.
  const double circle = std::pow(2.0, 8.0 * static_cast<double>(getSampleSize(out.getBufferType())));
  int failures = 0;
  forEachSample(in.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    const double expected = directMean(in, x, y, z, c, t, hx, hy);
    double distance = std::abs(getSample(out, x, y, z, c, t) - expected);
    if (!real) distance = std::abs(std::remainder(distance, circle)) - 0.5;
    if (distance > sums && failures++ < 3)
      ADD_FAILURE() << "x " << x << " y " << y << " z " << z << ": " << getSample(out, x, y, z, c, t)
                    << " instead of " << expected;
  });
}

ImagePtr smooth(const boost::shared_ptr<const image::BaseImage>& in, int hx, int hy, eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  meanSmoothing2dImg(in, static_cast<std::uint32_t>(hx), static_cast<std::uint32_t>(hy), out);
  return out;
}

class MeanSmoothing2dPairs : public ::testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, MeanSmoothing2dPairs, ::testing::ValuesIn(allTypes()),
                         [](const auto& info) { return image::toString(info.param); });

TEST_P(MeanSmoothing2dPairs, EveryOutputTypeAgreesWithTheDirectMean) {
  const ImagePtr in = randomImage({45, 150}, GetParam());
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    expectMean(*in, *smooth(in, 3, 2, type), 3, 2);
  }
}

// One reference run, then: every instruction set, thread count, memory layout, and in place. Strips of 64
// rows and more give the 300 rows several seams.
TEST_P(MeanSmoothing2dPairs, BitsDoNotDependOnHowItIsRun) {
  const ImagePtr in = randomImage({133, 300, 2, 1, 2}, GetParam());
  const ImagePtr gaps = withGaps(*in, 3);
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    const ImagePtr expected = smooth(in, 5, 4, type);
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(kernelClass, sets);
      EXPECT_TRUE(sameBits(*smooth(in, 5, 4, type), *expected)) << core::toString(sets.getSets());
      EXPECT_TRUE(sameBits(*smooth(gaps, 5, 4, type), *expected))
          << "gaps, " << core::toString(sets.getSets());
      if (getSampleSize(type) == getSampleSize(GetParam())) {
        const ImagePtr same = copyOf(*in);
        const ImagePtr out = Image::wrap(same->getData(), in->getGeometry(), type, same->getStrides(), same);
        meanSmoothing2dImg(same, 5, 4, out);
        EXPECT_TRUE(sameBits(*out, *expected)) << "in place, " << core::toString(sets.getSets());
      }
    }
    for (const std::size_t threads : {1, 2, 3, 7}) {
      core::ActionRunner::getInstance().setThreadCount(threads);
      EXPECT_TRUE(sameBits(*smooth(in, 5, 4, type), *expected)) << threads << " threads";
      core::ActionRunner::getInstance().setThreadCount(0);
    }
  }
}

TEST(MeanSmoothing2d, AllSmallSizesOnEveryInstructionSet) {
  struct Shape {
    std::size_t x, y;
    int hx, hy;
  };
  std::vector<Shape> shapes = {{1, 1, 0, 0},  {1, 1, 7, 9},   {1, 40, 2, 3},
                               {40, 1, 2, 3}, {5, 4, 13, 11}, {3, 200, 1, 70}};
  for (std::size_t width = 1; width <= 70; ++width)
    shapes.push_back({width, 9, 1 + static_cast<int>(width % 6), 2});
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(kernelClass, sets);
    for (const Shape& s : shapes)
      for (const auto type : {eImageBufferType::UInt8, eImageBufferType::Real32}) {
        SCOPED_TRACE(core::toString(sets.getSets()) + " " + std::to_string(s.x) + " x " +
                     std::to_string(s.y));
        const ImagePtr in = withGaps(*randomImage({s.x, s.y}, type), s.x % 4);
        const ImagePtr out = withGaps(*in, 1);
        const ImagePtr untouched = copyOf(*in);
        meanSmoothing2dImg(in, static_cast<std::uint32_t>(s.hx), static_cast<std::uint32_t>(s.hy), out);
        expectMean(*in, *out, s.hx, s.hy);
        EXPECT_TRUE(sameBits(*in, *untouched));
      }
  }
}

TEST(MeanSmoothing2d, WideImagesAndWindowsCrossTileSeams) {
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(kernelClass, sets);
    for (const int half : {0, 1, 40}) {
      const ImagePtr in = randomImage({3001, 20}, eImageBufferType::Real32);
      expectMean(*in, *smooth(in, half, 1, eImageBufferType::Real32), half, 1);
    }
  }
}

// AVX has a kernel for float only; without AVX2 the selector falls back for the other pairs.
TEST(MeanSmoothing2d, AvxServesFloatOnly) {
  if (!core::isAvailable(eIS_AVX)) GTEST_SKIP();
  const ImagePtr real = randomImage({70, 90}, eImageBufferType::Real32);
  const ImagePtr expected = smooth(real, 2, 3, eImageBufferType::Real32);
  const ForcedSets forced(kernelClass, {eIS_AVX});
  EXPECT_TRUE(sameBits(*smooth(real, 2, 3, eImageBufferType::Real32), *expected));
  try {
    smooth(real, 2, 3, eImageBufferType::UInt8);
    FAIL() << "there is no such kernel";
  } catch (const BaseException& failure) {
    EXPECT_NE(failure.getMessage().find("float32, uint8"), std::string::npos) << failure.what();
  }
}

TEST(MeanSmoothing2d, ConvertsByTheWrapRule) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  struct Row {
    float value;
    double u8, i8, u16, i16, u32, i32;
  };
  const std::vector<Row> table = {
      {300.2f, 44, 44, 300, 300, 300, 300},
      {2.5f, 3, 3, 3, 3, 3, 3},
      {-2.5f, 253, -3, 65533, -3, 4294967293.0, -3},
      {0.49999997f, 0, 0, 0, 0, 0, 0},
      {-0.5f, 255, -1, 65535, -1, 4294967295.0, -1},
      {8388609.f, 1, 1, 1, 1, 8388609, 8388609},
      {3e9f, 255, -1, 65535, -1, 3000000000.0, 3000000000.0 - 4294967296.0},
      {-3e9f, 0, 0, 0, 0, 4294967296.0 - 3000000000.0, 4294967296.0 - 3000000000.0},
      {1e30f, 255, -1, 65535, -1, 4294967295.0, -1},
      {inf, 255, -1, 65535, -1, 4294967295.0, -1},
      {-inf, 0, 0, 0, 0, 0, 0},
      {nan, 0, 0, 0, 0, 0, 0}};
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(kernelClass, sets);
    for (const Row& row : table) {
      SCOPED_TRACE(core::toString(sets.getSets()) + " " + std::to_string(row.value));
      // Wide enough for a vector of every width and a tail; neighbours of very different size must not
      // matter.
      const ImagePtr in = Image::create({37, 3}, eImageBufferType::Real32);
      for (std::size_t x = 0; x < 37; ++x)
        for (std::size_t y = 0; y < 3; ++y) setSample(*in, (x + y) % 2 ? row.value : 1e8, x, y);
      const double expected[] = {row.u8, row.i8, row.u16, row.i16, row.u32, row.i32};
      for (std::size_t i = 0; i < 6; ++i) {
        const ImagePtr out = smooth(in, 0, 0, allTypes()[i]);
        for (std::size_t x = 0; x < 37; ++x)
          for (std::size_t y = x % 2 ? 0 : 1; y < 3; y += 2)
            EXPECT_EQ(getSample(*out, x, y), expected[i])
                << image::toString(allTypes()[i]) << " " << x << " " << y;
      }
      EXPECT_TRUE(sameBits(*smooth(in, 0, 0, eImageBufferType::Real32), *in));
    }
  }
}

TEST(MeanSmoothing2d, NanSpreadsToTheRightAndBelowOnly) {
  const ImagePtr in = randomImage({60, 50}, eImageBufferType::Real32);
  const ImagePtr clean = smooth(in, 2, 3, eImageBufferType::Real32);
  setSample(*in, std::numeric_limits<double>::quiet_NaN(), 30, 20);
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(kernelClass, sets);
    const ImagePtr out = smooth(in, 2, 3, eImageBufferType::Real32);
    forEachSample(out->getGeometry(), [&](auto x, auto y, auto, auto, auto) {
      if (x < 28 || y < 17) {
        EXPECT_EQ(getSample(*out, x, y), getSample(*clean, x, y)) << x << " " << y;
      } else if (x <= 32 && y <= 23) {
        EXPECT_TRUE(std::isnan(getSample(*out, x, y))) << x << " " << y;
      }
    });
  }
}

TEST(MeanSmoothing2d, EveryPlaneIsSmoothedOnItsOwn) {
  const ImagePtr in = randomImage({20, 17, 3, 2, 2}, eImageBufferType::Int16);
  expectMean(*in, *smooth(in, 2, 1, eImageBufferType::Real32), 2, 1);
}

TEST(MeanSmoothing2d, FourCallFormsGiveTheSameImage) {
  const ImagePtr in = randomImage({300, 200}, eImageBufferType::UInt16);
  const auto created = meanSmoothing2dImg(in, 2, 1);
  EXPECT_EQ(created->getGeometry(), in->getGeometry());
  EXPECT_EQ(created->getBufferType(), in->getBufferType());
  const Image& expected = image::hostImage(created, "created");
  EXPECT_TRUE(sameBits(*smooth(in, 2, 1, eImageBufferType::UInt16), expected));
  const auto running = meanSmoothing2dImg_async(in, 2, 1);
  EXPECT_TRUE(sameBits(image::hostImage(getAsyncProcessorOutput(running), "async"), expected));
  const ImagePtr out = Image::create(in->getGeometry(), eImageBufferType::UInt16);
  EXPECT_EQ(getAsyncProcessorOutput(meanSmoothing2dImg_async(in, 2, 1, out)), out);
  EXPECT_TRUE(sameBits(*out, expected));
}

TEST(MeanSmoothing2d, BadCallsNameWhatIsWrongAndTouchNothing) {
  const ImagePtr in = randomImage({20, 10}, eImageBufferType::UInt8);
  const ImagePtr wrong = randomImage({20, 11}, eImageBufferType::UInt8, 2);
  const ImagePtr before = copyOf(*wrong);
  const ImagePtr tall = randomImage({20, 11}, eImageBufferType::UInt8);
  const ImagePtr upper =
      Image::wrap(tall->getData(), {20, 10}, eImageBufferType::UInt8, tall->getStrides(), tall);
  const ImagePtr lower =
      Image::wrap(tall->getRow(1), {20, 10}, eImageBufferType::UInt8, tall->getStrides(), tall);
  const ImagePtr tallBefore = copyOf(*tall);
  struct Call {
    std::function<void()> run;
    const char* words;
  };
  const std::vector<Call> calls = {
      {[&] { meanSmoothing2dImg(nullptr, 1, 1); }, "InImg"},
      {[&] { meanSmoothing2dImg(in, 1, 1, nullptr); }, "OutImg"},
      {[&] { meanSmoothing2dImg(in, 1, 1, wrong); }, "20 x 11"},
      {[&] { getAsyncProcessorOutput(meanSmoothing2dImg_async(in, 1, 1, wrong)); }, "20 x 11"},
      {[&] { meanSmoothing2dImg(in, 4294967295u, 1); }, "InHalfKnlSizeX: the value is refused: 4294967295"},
      {[&] { meanSmoothing2dImg_async(in, 1, 32768); }, "InHalfKnlSizeY: the value is refused: 32768"},
      {[&] { meanSmoothing2dImg(upper, 1, 1, lower); }, "overlap"},
      {[&] { getAsyncProcessorOutput(nullptr); }, "null"}};
  for (const Call& call : calls) {
    try {
      call.run();
      ADD_FAILURE() << call.words << ": nothing was thrown";
    } catch (const BaseException& failure) {
      EXPECT_NE(failure.getMessage().find(call.words), std::string::npos) << failure.what();
    }
  }
  EXPECT_TRUE(sameBits(*wrong, *before));
  EXPECT_TRUE(sameBits(*tall, *tallBefore));
}

// Over a window of many periods of the mirrored image, the mean is that of the image along the axis; and it
// is no more work than a window of the size of the image.
TEST(MeanSmoothing2d, LargestWindowsAreRight) {
  const ImagePtr in = randomImage({5, 3}, eImageBufferType::UInt8);
  for (const bool alongX : {true, false})
    for (const bool alongY : {true, false}) {
      const ImagePtr out = smooth(in, alongX ? 32767 : 0, alongY ? 32767 : 0, eImageBufferType::Real32);
      forEachSample(in->getGeometry(), [&](auto x, auto y, auto, auto, auto) {
        double sum = 0, count = 0;
        forEachSample(in->getGeometry(), [&](auto u, auto v, auto, auto, auto) {
          if ((!alongX && u != x) || (!alongY && v != y)) return;
          sum += getSample(*in, u, v);
          ++count;
        });
        EXPECT_NEAR(getSample(*out, x, y), sum / count, 0.05) << x << " " << y << alongX << alongY;
      });
    }
}

// What the rounding of single precision leaves of a constant: nothing in integers that hold few digits.
TEST(MeanSmoothing2d, AConstantImageStaysConstant) {
  for (const auto type : allTypes())
    for (const int half : {0, 1, 5, 40}) {
      SCOPED_TRACE(std::string(image::toString(type)) + " half " + std::to_string(half));
      const ImagePtr in = Image::create({70, 90}, type);
      forEachSample(in->getGeometry(), [&](auto x, auto y, auto, auto, auto) { setSample(*in, 113, x, y); });
      for (const auto outType : allTypes()) {
        const ImagePtr out = smooth(in, half, half, outType);
        const double tolerance = outType == eImageBufferType::Real32 ? 113 * 1e-5 : 0;
        forEachSample(in->getGeometry(), [&](auto x, auto y, auto, auto, auto) {
          EXPECT_NEAR(getSample(*out, x, y), 113, tolerance) << x << " " << y;
        });
      }
    }
}

// The second level can be made by name; it must not trust what it is given.
TEST(MeanSmoothing2d, LowerLevelsCheckTheirOwnCalls) {
  const auto plane =
      processor::ProcessorFactory::createProcessor("vexo::imaproc::filter::MeanSmoothing2dImgLvl2");
  for (const auto policy :
       {processor::eProcessorRulePolicy::WithRules, processor::eProcessorRulePolicy::WithoutRules}) {
    plane->init(policy);
    EXPECT_THROW(executeSyncRun(plane), BaseException);
    plane->set<attr::InSubImg2d>(randomImage({64, 64}, eImageBufferType::UInt8));
    plane->set<attr::InHalfKnlSizeX>(1);
    plane->set<attr::InHalfKnlSizeY>(1);
    const ImagePtr narrow = randomImage({8, 64}, eImageBufferType::UInt8), before = copyOf(*narrow);
    plane->set<attr::OutImg>(narrow);
    EXPECT_THROW(executeSyncRun(plane), BaseException);
    EXPECT_TRUE(sameBits(*narrow, *before));
  }
  const auto strip = processor::ProcessorFactory::createProcessor(kernelClass);
  strip->init(processor::eProcessorRulePolicy::WithoutRules);
  EXPECT_THROW(executeSyncRun(strip), BaseException);
}

TEST(MeanSmoothing2d, ManyCallsAtOnceOnSharedImages) {
  const ImagePtr in = randomImage({150, 170}, eImageBufferType::UInt8);
  const ImagePtr expected = smooth(in, 4, 4, eImageBufferType::Real32);
  std::vector<std::thread> callers;
  std::atomic<int> right{0};
  for (int i = 0; i < 64; ++i)
    callers.emplace_back(
        [&] { right += sameBits(*smooth(in, 4, 4, eImageBufferType::Real32), *expected) ? 1 : 0; });
  for (auto& caller : callers) caller.join();
  EXPECT_EQ(right, 64);
}

}  // namespace
}  // namespace vexo::imaproc::filter
