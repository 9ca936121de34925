#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl1.h"

#include "ConvolutionTests.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;
using KernelPtr = boost::shared_ptr<const KernelXY>;
using BorderPtr = boost::shared_ptr<const image::Border2dPolicy>;

constexpr auto real32 = eImageBufferType::Real32;
constexpr float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();

ImagePtr convolve(const ImagePtr& in, const KernelPtr& kernel, bool normalize = false,
                  eImageBufferType type = real32, const BorderPtr& border = image::mirorBorder2d()) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  convolution2dImg(in, kernel, normalize, border, out);
  return out;
}

struct Point {
  int dx, dy;
  float weight;
};
KernelPtr kernelOf(const std::vector<Point>& points) {
  const auto kernel = boost::make_shared<KernelXY>();
  for (const Point& p : points) kernel->insert({p.dx, p.dy}, p.weight);
  return kernel;
}

/// Kernels of every kind: along one axis, dense, one-sided, unordered with repeated points, sparse, few
/// rows read far ahead, wider than what is looked up at once.
std::vector<KernelPtr> variedKernels() {
  return {kernelOf({{0, 0, 1.5f}}),
          boxKernel<KernelXY>(-1, 1, -1, 1),
          boxKernel<KernelXY>(-9, 9, 0, 0),
          boxKernel<KernelXY>(0, 0, -9, 9),
          boxKernel<KernelXY>(2, 6, -7, -3),
          boxKernel<KernelXY>(-13, 12, -6, 7),
          boxKernel<KernelXY>(-17, 16, -15, 16),
          kernelOf({{3, 2, 0.5f}, {-1, -2, 2}, {3, 2, 0.25f}, {0, 0, -1}, {-1, -2, 1}, {5, -2, 0.125f}}),
          kernelOf({{-40, 0, 1}, {40, 0, -2}}),
          kernelOf({{0, -40, 1}, {0, 40, 3}}),
          kernelOf({{0, 50, 1}}),
          kernelOf({{0, -1, 1}}),
          kernelOf({{0, -3, 1}, {0, -5, 2}, {0, -4, 1}, {0, -3, 1}}),
          kernelOf({{0, 6, 1}, {0, 6, 2}, {0, 6, 3}, {0, 6, 4}, {0, 7, 5}, {0, 7, 6}, {0, 7, 7}, {0, 7, 8}}),
          kernelOf({{-60, -70, 0.5f}, {60, 70, 0.5f}})};
}

class Convolution2dPairs : public testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, Convolution2dPairs, testing::ValuesIn(allTypes()), TypeName());

TEST_P(Convolution2dPairs, EveryOutputTypeAgreesWithTheDirectSum) {
  const ImagePtr in = randomImage({45, 80}, GetParam());
  const KernelPtr kernel = boxKernel<KernelXY>(-3, 2, -1, 2);
  for (const auto type : allTypes())
    for (const bool normalize : {false, true}) {
      SCOPED_TRACE(image::toString(type));
      expectConvolution(*in, *convolve(in, kernel, normalize, type), *kernel, normalize);
    }
}

TEST(Convolution2d, EveryKernelAndBorderAgreesWithTheDirectSum) {
  for (const auto& kernel : variedKernels())
    for (const BorderPtr& border : {image::mirorBorder2d(), image::replicateBorder2d(),
                                    image::circularBorder2d(), image::constantBorder2d(77)})
      for (const ImageGeometry& size : {ImageGeometry{150, 90}, {1, 1}, {1, 40}, {40, 1}, {5, 3}}) {
        SCOPED_TRACE(kernel->toText().substr(0, 60) + " " + border->toText() + " " + toString(size));
        const ImagePtr in = randomImage(size, eImageBufferType::Int16);
        expectConvolution(*in, *convolve(in, kernel, false, real32, border), *kernel, false, *border);
      }
}

TEST(Convolution2d, EveryKernelGivesTheSameBitsHoweverItIsRun) {
  for (const auto& kernel : variedKernels())
    for (const BorderPtr& border : {image::mirorBorder2d(), image::circularBorder2d()}) {
      SCOPED_TRACE(kernel->toText().substr(0, 60) + " " + border->toText());
      expectSameBitsHoweverItIsRun(randomImage({131, 200}, real32), [&](const auto& from, const auto& to) {
        convolution2dImg(from, kernel, false, border, to);
      });
    }
}

TEST(Convolution2d, AllSmallWidthsOnEveryInstructionSet) {
  const KernelPtr kernel = boxKernel<KernelXY>(-2, 1, -1, 2);
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    for (std::size_t width = 1; width <= 140; ++width) {
      SCOPED_TRACE(core::toString(sets.getSets()) + " " + std::to_string(width));
      const ImagePtr in = randomImage({width, 5}, eImageBufferType::UInt8);
      expectConvolution(*in, *convolve(in, kernel, true, eImageBufferType::UInt8), *kernel, true);
    }
  }
}

TEST(Convolution2d, WideImagesCrossTileSeams) {
  const ImagePtr in = randomImage({4501, 20}, real32);
  for (const auto& kernel : {boxKernel<KernelXY>(-3, 3, -2, 2), boxKernel<KernelXY>(-30, 1, 0, 0),
                             boxKernel<KernelXY>(0, 0, -2, 9)})
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(sets);
      expectConvolution(*in, *convolve(in, kernel, true), *kernel, true);
      const ImagePtr same = copyOf(*in);
      convolution2dImg(same, kernel, true, same);
      EXPECT_TRUE(sameBits(*same, *convolve(in, kernel, true))) << "in place";
    }
}

// The farthest offsets, alone and together; memory is bounded, so these run at all.
TEST(Convolution2d, FarOffsets) {
  const ImagePtr in = randomImage({7, 300}, eImageBufferType::UInt8);
  for (const auto& kernel : {kernelOf({{30000, 0, 1}}), kernelOf({{0, -32767, 1}}),
                             kernelOf({{32767, 32767, 2}, {-32767, -32767, 1}}),
                             kernelOf({{-32767, 5, 1}, {0, 0, 1}, {32767, -5, 1}, {0, 0, 3}})})
    expectConvolution(*in, *convolve(in, kernel), *kernel, false);
  // A dense column of 40001 points over 3 rows: the mean of each column, whose borders are mirrored.
  const auto tall = boost::make_shared<KernelXY>();
  for (int dy = -20000; dy <= 20000; ++dy) tall->insert({0, dy}, 1);
  const ImagePtr low = randomImage({5, 3}, eImageBufferType::UInt8);
  const ImagePtr out = convolve(low, tall, true);
  for (std::size_t x = 0; x < 5; ++x)
    EXPECT_NEAR(getSample(*out, x, 1),
                (getSample(*low, x, 0) + getSample(*low, x, 1) + getSample(*low, x, 2)) / 3, 0.1);
}

TEST(Convolution2d, SumsTooNearZeroDoNotDivide) {
  const ImagePtr in = randomImage({40, 30}, eImageBufferType::UInt8);
  for (const float excess : {0.0f, 1e-8f, -1e-8f}) {
    const KernelPtr derivative = kernelOf({{-1, 0, -1}, {1, 0, 1}, {0, 0, excess}});
    EXPECT_TRUE(sameBits(*convolve(in, derivative, true), *convolve(in, derivative, false))) << excess;
  }
  const KernelPtr enough = kernelOf({{-1, 0, -1}, {1, 0, 1}, {0, 0, 2e-8f}});
  expectConvolution(*in, *convolve(in, enough, false), *enough, false);
  EXPECT_FALSE(sameBits(*convolve(in, enough, true), *convolve(in, enough, false)));
  const KernelPtr negative = kernelOf({{0, 0, -4}, {1, 1, 1}});
  expectConvolution(*in, *convolve(in, negative, true), *negative, true);
}

TEST(Convolution2d, EmptyKernelGivesZero) {
  const ImagePtr in = randomImage({40, 30}, real32);
  setSample(*in, nan, 3, 3);
  for (const auto type : allTypes())
    for (const bool normalize : {false, true})
      EXPECT_TRUE(sameBits(
          *convolve(in, kernelOf({}), normalize, type),
          *convolve(randomImage({40, 30}, eImageBufferType::UInt8), kernelOf({{0, 0, 0}}), false, type)));
  EXPECT_EQ(getSample(*convolve(in, kernelOf({}), true), 3, 3), 0);
  const ImagePtr same = copyOf(*in);
  convolution2dImg(same, kernelOf({}), false, same);
  EXPECT_EQ(getSample(*same, 20, 20), 0);
}

TEST(Convolution2d, ConvertsByTheWrapRule) {
  const std::vector<std::pair<float, double>> table = {
      {300.4f, 44}, {2.5f, 3}, {-2.5f, 253}, {0.49999997f, 0}, {inf, 255}, {-inf, 0}, {nan, 0}};
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    for (const auto& [value, expected] : table) {
      SCOPED_TRACE(value);
      const ImagePtr in = constantImage({70, 2}, real32, static_cast<double>(value));
      expectSamples(*convolve(in, kernelOf({{0, 0, 1}}), true, eImageBufferType::UInt8),
                    [expected = expected](auto...) { return expected; });
    }
  }
}

TEST(Convolution2d, NanAndInfinitiesReachOnlyTheirNeighbours) {
  const ImagePtr in = randomImage({60, 50}, real32);
  const KernelPtr kernel = boxKernel<KernelXY>(-2, 3, -1, 2);
  const ImagePtr clean = convolve(in, kernel);
  for (const float value : {nan, inf}) {
    setSample(*in, static_cast<double>(value), 30, 20);
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(sets);
      const ImagePtr out = convolve(in, kernel);
      expectSamples(*out, [&](auto x, auto y, auto...) {
        if (x < 27 || x > 32 || y < 18 || y > 21) return getSample(*clean, x, y);
        EXPECT_FALSE(std::isfinite(getSample(*out, x, y))) << x << " " << y;
        return getSample(*out, x, y);
      });
    }
  }
}

TEST(Convolution2d, NanAndInfiniteWeights) {
  const ImagePtr in = constantImage({40, 3}, eImageBufferType::UInt8, 5);
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    EXPECT_TRUE(std::isnan(getSample(*convolve(in, kernelOf({{0, 0, nan}, {1, 0, 1}})), 20, 1)));
    EXPECT_TRUE(std::isnan(getSample(*convolve(in, kernelOf({{0, 0, nan}}), true), 20, 1)));
    EXPECT_EQ(getSample(*convolve(in, kernelOf({{0, 0, inf}, {1, 0, 1}})), 20, 1), static_cast<double>(inf));
    EXPECT_TRUE(std::isnan(getSample(*convolve(in, kernelOf({{0, 0, inf}, {1, 0, 1}}), true), 20, 1)));
    EXPECT_TRUE(std::isnan(getSample(*convolve(in, kernelOf({{0, 0, inf}, {1, 0, -inf}})), 20, 1)));
    EXPECT_EQ(getSample(*convolve(in, kernelOf({{0, 0, nan}}), false, eImageBufferType::UInt8), 20, 1), 0);
    EXPECT_EQ(getSample(*convolve(in, kernelOf({{0, 0, -inf}}), false, eImageBufferType::UInt8), 20, 1), 0);
    EXPECT_EQ(getSample(*convolve(in, kernelOf({{0, 0, inf}}), false, eImageBufferType::UInt8), 20, 1), 255);
  }
}

TEST(Convolution2d, ReadsTheSampleAtTheOffset) {
  const ImagePtr in = randomImage({30, 20}, eImageBufferType::UInt16);
  const ImagePtr out = convolve(in, kernelOf({{2, -3, 1}}));
  EXPECT_EQ(getSample(*out, 10, 10), getSample(*in, 12, 7));
}

TEST_P(Convolution2dPairs, TheGpuGivesTheResultOfTheHost) {
  if (!core::isGpuSupportActivated()) GTEST_SKIP() << "no GPU";
  const ImagePtr in = randomImage({45, 31}, GetParam());
  const KernelPtr kernel = boxKernel<KernelXY>(-3, 2, -1, 2);
  for (const BorderPtr& border : {image::mirorBorder2d(), image::replicateBorder2d(),
                                  image::circularBorder2d(), image::constantBorder2d(77.4)})
    for (const auto type : allTypes())
      for (const bool inPlace : {false, true}) {
        if (inPlace && type != GetParam()) continue;
        SCOPED_TRACE(border->toText() + " " + image::toString(type));
        const ImagePtr out = runOnGpu(*in, type, inPlace, [&](const auto& from, const auto& to) {
          convolution2dImg(from, kernel, true, border, to);
        });
        EXPECT_TRUE(sameBits(*out, *convolve(in, kernel, true, type, border)));
      }
}

TEST(Convolution2d, TheGpuLevelRefusesImagesOfTheHost) {
  const auto gpu =
      processor::ProcessorFactory::createProcessor("vexo::imaproc::filter::Convolution2dImgGpuLvl3");
  gpu->init();
  const ImagePtr image = randomImage({8, 8}, real32);
  gpu->set<attr::InSubGpuImg>(image);
  gpu->set<attr::OutImg>(image);
  gpu->set<attr::InKnlXY>(kernelOf({}));
  gpu->set<attr::InNormalize>(false);
  gpu->set<attr::InConvolBorder2d>(image::mirorBorder2d());
  expectFailure({"InSubGpuImg is not an image on the GPU"}, [&] { processor::executeSyncRun(gpu); });
}

}  // namespace
}  // namespace vexo::imaproc::filter
