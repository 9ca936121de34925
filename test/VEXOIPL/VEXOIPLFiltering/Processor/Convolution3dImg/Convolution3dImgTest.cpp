#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl1.h"

#include "../Convolution2dImg/ConvolutionTests.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl1.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;
using KernelPtr = boost::shared_ptr<const KernelXYZ>;
using BorderPtr = boost::shared_ptr<const image::Border3dPolicy>;

constexpr auto real32 = eImageBufferType::Real32;

ImagePtr convolve(const ImagePtr& in, const KernelPtr& kernel, bool normalize = false,
                  eImageBufferType type = real32, const BorderPtr& border = image::mirorBorder3d()) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  convolution3dImg(in, kernel, normalize, border, out);
  return out;
}

struct Point {
  int dx, dy, dz;
  float weight;
};
KernelPtr kernelOf(const std::vector<Point>& points) {
  const auto kernel = boost::make_shared<KernelXYZ>();
  for (const Point& p : points) kernel->insert({p.dx, p.dy, p.dz}, p.weight);
  return kernel;
}

/// Kernels of every kind: along one or two axes, dense, one-sided, unordered with repeated points, sparse.
std::vector<KernelPtr> variedKernels() {
  return {kernelOf({{0, 0, 0, 1.5f}}),
          boxKernel<KernelXYZ>(-1, 1, -1, 1, -1, 1),
          boxKernel<KernelXYZ>(-5, 5, 0, 0),
          boxKernel<KernelXYZ>(0, 0, -5, 5),
          boxKernel<KernelXYZ>(0, 0, 0, 0, -5, 5),
          boxKernel<KernelXYZ>(-2, 2, 0, 0, -2, 1),
          boxKernel<KernelXYZ>(0, 0, -1, 2, -2, 1),
          boxKernel<KernelXYZ>(-2, 1, -1, 2, 3, 3),
          boxKernel<KernelXYZ>(1, 3, -4, -2, 2, 5),
          boxKernel<KernelXYZ>(-3, 3, -3, 3, -3, 3),
          kernelOf({{3, 2, 1, 0.5f}, {-1, -2, -3, 2}, {3, 2, 1, 0.25f}, {0, 0, 0, -1}, {-1, -2, -3, 1}}),
          kernelOf({{0, 0, -40, 1}, {0, 0, 40, 3}}),
          kernelOf({{0, 0, -1, 1}}),
          kernelOf({{0, 0, -3, 1}, {0, 0, -2, 2}}),
          kernelOf({{0, 3, 0, 1}, {0, 2, 0, 2}}),
          kernelOf({{-60, -70, 50, 0.5f}, {60, 70, -50, 0.5f}})};
}

class Convolution3dPairs : public testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, Convolution3dPairs, testing::ValuesIn(allTypes()), TypeName());

TEST_P(Convolution3dPairs, EveryOutputTypeAgreesWithTheDirectSum) {
  const ImagePtr in = randomImage({25, 14, 9}, GetParam());
  const KernelPtr kernel = boxKernel<KernelXYZ>(-2, 1, -1, 1, -1, 2);
  for (const auto type : allTypes())
    for (const bool normalize : {false, true}) {
      SCOPED_TRACE(image::toString(type));
      expectConvolution(*in, *convolve(in, kernel, normalize, type), *kernel, normalize);
    }
}

TEST(Convolution3d, EveryKernelAndBorderAgreesWithTheDirectSum) {
  for (const auto& kernel : variedKernels())
    for (const BorderPtr& border : {image::mirorBorder3d(), image::replicateBorder3d(),
                                    image::circularBorder3d(), image::constantBorder3d(77)})
      for (const ImageGeometry& size :
           {ImageGeometry{20, 12, 40}, {1, 1, 1}, {30, 1, 1}, {1, 30, 1}, {1, 1, 30}, {9, 7, 1}, {3, 2, 2}}) {
        SCOPED_TRACE(kernel->toText().substr(0, 60) + " " + border->toText() + " " + toString(size));
        const ImagePtr in = randomImage(size, eImageBufferType::Int16);
        expectConvolution(*in, *convolve(in, kernel, false, real32, border), *kernel, false, *border);
      }
}

TEST(Convolution3d, EveryKernelGivesTheSameBitsHoweverItIsRun) {
  for (const auto& kernel : variedKernels())
    for (const BorderPtr& border : {image::mirorBorder3d(), image::circularBorder3d()}) {
      SCOPED_TRACE(kernel->toText().substr(0, 60) + " " + border->toText());
      expectSameBitsHoweverItIsRun(randomImage({35, 13, 60}, real32), [&](const auto& from, const auto& to) {
        convolution3dImg(from, kernel, false, border, to);
      });
    }
}

// Wide and high enough to be cut into tiles of columns and of rows.
TEST(Convolution3d, LargeSlicesCrossTileSeams) {
  const ImagePtr in = randomImage({2300, 90, 3}, eImageBufferType::UInt8);
  for (const auto& kernel :
       {boxKernel<KernelXYZ>(-1, 1, -1, 1, -1, 1), boxKernel<KernelXYZ>(0, 0, 0, 0, -2, 2)})
    expectConvolution(*in, *convolve(in, kernel, true), *kernel, true);
}

TEST(Convolution3d, FarOffsets) {
  const ImagePtr in = randomImage({7, 5, 30}, eImageBufferType::UInt8);
  for (const auto& kernel : {kernelOf({{30000, 0, 0, 1}}), kernelOf({{0, 0, -32767, 1}}),
                             kernelOf({{32767, 32767, 32767, 2}, {-32767, -32767, -32767, 1}})})
    expectConvolution(*in, *convolve(in, kernel), *kernel, false);
}

TEST(Convolution3d, KernelWithinSlicesAgreesWithThe2dFilter) {
  const ImagePtr in = randomImage({60, 50, 20, 2, 2}, eImageBufferType::Int16);
  const auto planar = boxKernel<KernelXY>(-2, 1, -1, 3);
  const auto kernel = boxKernel<KernelXYZ>(-2, 1, -1, 3);
  EXPECT_TRUE(sameBits(image::hostImage(convolution3dImg(in, kernel, true), "3d"),
                       image::hostImage(convolution2dImg(in, planar, true), "2d")));
}

TEST(Convolution3d, EmptyKernelAndSumsNearZero) {
  const ImagePtr in = randomImage({20, 10, 5}, eImageBufferType::UInt8);
  EXPECT_EQ(getSample(*convolve(in, kernelOf({}), true), 3, 3, 3), 0);
  EXPECT_EQ(getSample(*convolve(in, kernelOf({}), false), 3, 3, 3), 0);
  const KernelPtr derivative = kernelOf({{0, 0, -1, -1}, {0, 0, 1, 1}, {0, 0, 0, 1e-8f}});
  EXPECT_TRUE(sameBits(*convolve(in, derivative, true), *convolve(in, derivative, false)));
}

TEST(Convolution3d, KeepsTheLowBits) {
  const ImagePtr in = constantImage({20, 3, 3}, real32, 300.4);
  EXPECT_EQ(getSample(*convolve(in, kernelOf({{0, 0, 0, 1}}), true, eImageBufferType::UInt8), 5, 1, 1), 44);
}

TEST_P(Convolution3dPairs, TheGpuGivesTheResultOfTheHost) {
  if (!core::isGpuSupportActivated()) GTEST_SKIP() << "no GPU";
  const ImagePtr in = randomImage({25, 13, 8, 2, 1}, GetParam());
  const KernelPtr kernel = boxKernel<KernelXYZ>(-3, 2, -1, 2, -1, 1);
  for (const BorderPtr& border : {image::mirorBorder3d(), image::replicateBorder3d(),
                                  image::circularBorder3d(), image::constantBorder3d(77.4)})
    for (const auto type : allTypes())
      for (const bool inPlace : {false, true}) {
        if (inPlace && type != GetParam()) continue;
        SCOPED_TRACE(border->toText() + " " + image::toString(type));
        const ImagePtr out = runOnGpu(*in, type, inPlace, [&](const auto& from, const auto& to) {
          convolution3dImg(from, kernel, true, border, to);
        });
        EXPECT_TRUE(sameBits(*out, *convolve(in, kernel, true, type, border)));
      }
}

TEST(Convolution3d, TheGpuLevelRefusesImagesOfTheHost) {
  const auto gpu =
      processor::ProcessorFactory::createProcessor("vexo::imaproc::filter::Convolution3dImgGpuLvl3");
  gpu->init();
  const ImagePtr image = randomImage({8, 8}, real32);
  gpu->set<attr::InSubGpuImg>(image);
  gpu->set<attr::OutImg>(image);
  gpu->set<attr::InKnlXYZ>(kernelOf({}));
  gpu->set<attr::InNormalize>(false);
  gpu->set<attr::InConvolBorder3d>(image::mirorBorder3d());
  expectFailure({"InSubGpuImg is not an image on the GPU"}, [&] { processor::executeSyncRun(gpu); });
}

}  // namespace
}  // namespace vexo::imaproc::filter
