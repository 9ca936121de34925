#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing3dImg/GaussianSmoothing3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianReference.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;

const char* const kernelClass = "vexo::imaproc::filter::Convolution3dImgLvl3";

ImagePtr smooth(const boost::shared_ptr<const image::BaseImage>& in, float sx, float sy, float sz,
                eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  gaussianSmoothing3dImg(in, sx, sy, sz, gaussianCoverage(), out);
  return out;
}

void expectGaussian(const Image& in, const Image& out, double sx, double sy, double sz) {
  GaussianReference(in, out.getBufferType(), {{0, sx}, {1, sy}, {2, sz}}).expect(out);
}

class GaussianSmoothing3dPairs : public ::testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, GaussianSmoothing3dPairs, ::testing::ValuesIn(allTypes()),
                         [](const auto& info) { return image::toString(info.param); });

TEST_P(GaussianSmoothing3dPairs, EveryOutputTypeAgreesWithTheDirectGaussian) {
  const ImagePtr in = randomImage({25, 14, 20}, GetParam());
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    const GaussianReference reference(*in, type, {{0, 1.7}, {1, 0.8}, {2, 1.2}});
    reference.expect(*smooth(in, 1.7f, 0.8f, 1.2f, type));
    if (getSampleSize(type) < 4) {
      EXPECT_GT(reference.exactPart(), 0.85);
    }
  }
}

// Tall enough for several strips of slices.
TEST_P(GaussianSmoothing3dPairs, BitsDoNotDependOnHowItIsRun) {
  const ImagePtr in = randomImage({19, 9, 200, 2}, GetParam());
  const ImagePtr gaps = withGaps(*in, 3);
  for (const auto type : {eImageBufferType::UInt8, eImageBufferType::Int16, GetParam()}) {
    SCOPED_TRACE(image::toString(type));
    const ImagePtr expected = smooth(in, 1, 0.5f, 2, type);
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(kernelClass, sets);
      EXPECT_TRUE(sameBits(*smooth(in, 1, 0.5f, 2, type), *expected)) << core::toString(sets.getSets());
      EXPECT_TRUE(sameBits(*smooth(gaps, 1, 0.5f, 2, type), *expected))
          << "gaps, " << core::toString(sets.getSets());
    }
    for (const std::size_t threads : {1, 3, 7}) {
      core::ActionRunner::getInstance().setThreadCount(threads);
      EXPECT_TRUE(sameBits(*smooth(in, 1, 0.5f, 2, type), *expected)) << threads << " threads";
      const ImagePtr same = copyOf(*in);
      gaussianSmoothing3dImg(same, 1, 0.5f, 2, gaussianCoverage(), same);
      EXPECT_TRUE(sameBits(*same, *smooth(in, 1, 0.5f, 2, GetParam())))
          << "in place, " << threads << " threads";
      core::ActionRunner::getInstance().setThreadCount(0);
    }
  }
}

// The result of each axis is stored in the output's type before the next is smoothed.
TEST(GaussianSmoothing3d, EachAxisIsConvertedInTheOrderXYZ) {
  const auto type = eImageBufferType::UInt8;
  const ImagePtr in = randomImage({30, 20, 25}, type);
  const auto alongX = [&](const ImagePtr& image) { return smooth(image, 1.2f, 0, 0, type); };
  const auto alongY = [&](const ImagePtr& image) { return smooth(image, 0, 1.2f, 0, type); };
  const auto alongZ = [&](const ImagePtr& image) { return smooth(image, 0, 0, 1.2f, type); };
  const ImagePtr all = smooth(in, 1.2f, 1.2f, 1.2f, type);
  EXPECT_TRUE(sameBits(*all, *alongZ(alongY(alongX(in)))));
  EXPECT_FALSE(sameBits(*all, *alongZ(alongX(alongY(in)))));
  EXPECT_FALSE(sameBits(*all, *alongY(alongZ(alongX(in)))));
}

TEST(GaussianSmoothing3d, AllCallFormsGiveTheSameImage) {
  const ImagePtr in = randomImage({20, 13, 15}, eImageBufferType::UInt16);
  const auto created = gaussianSmoothing3dImg(in, 1.5f);
  EXPECT_EQ(created->getGeometry(), in->getGeometry());
  EXPECT_EQ(created->getBufferType(), in->getBufferType());
  const Image& expected = image::hostImage(created, "created");
  const auto defaults = attr::InOptSmoothingGaussianCoverage::defaultValue();
  const auto isExpected = [&](const boost::shared_ptr<const image::BaseImage>& out) {
    return sameBits(image::hostImage(out, "out"), expected);
  };
  EXPECT_TRUE(isExpected(gaussianSmoothing3dImg(in, 1.5f, 1.5f, 1.5f, defaults)));
  EXPECT_TRUE(isExpected(smooth(in, 1.5f, 1.5f, 1.5f, eImageBufferType::UInt16)));
  EXPECT_TRUE(isExpected(getAsyncProcessorOutput(gaussianSmoothing3dImg_async(in, 1.5f))));
  EXPECT_TRUE(
      isExpected(getAsyncProcessorOutput(gaussianSmoothing3dImg_async(in, 1.5f, 1.5f, 1.5f, defaults))));
  const ImagePtr out = Image::create(in->getGeometry(), eImageBufferType::UInt16);
  EXPECT_EQ(getAsyncProcessorOutput(gaussianSmoothing3dImg_async(in, 1.5f, 1.5f, 1.5f, defaults, out)), out);
  EXPECT_TRUE(isExpected(out));
}

TEST(GaussianSmoothing3d, EveryVolumeIsSmoothedOnItsOwn) {
  const ImagePtr in = randomImage({12, 10, 9, 2, 3}, eImageBufferType::Int16);
  for (const auto type : {eImageBufferType::Real32, eImageBufferType::Int16})
    expectGaussian(*in, *smooth(in, 2, 1, 0.7f, type), 2, 1, 0.7f);
}

TEST(GaussianSmoothing3d, FlatAndThinVolumesAndLargeWindows) {
  for (const ImageGeometry& geometry :
       {ImageGeometry{1, 1, 1}, {9, 7, 1}, {9, 1, 8}, {1, 7, 8}, {1, 1, 70}, {4, 3, 2}})
    for (const auto type : {eImageBufferType::UInt8, eImageBufferType::Real32}) {
      SCOPED_TRACE(toString(geometry));
      const ImagePtr in = randomImage(geometry, type);
      const ImagePtr untouched = copyOf(*in);
      expectGaussian(*in, *smooth(in, 5, 7, 6, type), 5, 7, 6);
      expectGaussian(*in, *smooth(in, 0.3f, 0.9f, 1, type), 0.3f, 0.9f, 1);
      EXPECT_TRUE(sameBits(*in, *untouched));
    }
}

TEST(GaussianSmoothing3d, NoDeviationLeavesTheAxis) {
  for (const auto type : allTypes()) {
    const ImagePtr in = randomImage({12, 11, 13}, type);
    EXPECT_TRUE(sameBits(*smooth(in, 0, 0, 0, type), *in)) << image::toString(type);
    expectGaussian(*in, *smooth(in, 2, 0, 0, type), 2, 0, 0);
    expectGaussian(*in, *smooth(in, 0, 2, 0, type), 0, 2, 0);
    expectGaussian(*in, *smooth(in, 0, 0, 2, type), 0, 0, 2);
  }
}

TEST(GaussianSmoothing3d, BadCallsNameWhatIsWrongAndTouchNothing) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const ImagePtr in = randomImage({8, 7, 6}, eImageBufferType::UInt8);
  const ImagePtr out = randomImage({8, 7, 6}, eImageBufferType::Int16, 2);
  const ImagePtr before = copyOf(*out);
  const ImagePtr wrong = randomImage({8, 7, 5}, eImageBufferType::UInt8, 2);
  const ImagePtr wrongBefore = copyOf(*wrong);
  const auto item = gaussianCoverage();
  const auto call = [&](float sx, float sy, float sz, float coverage) {
    return [=] { gaussianSmoothing3dImg(in, sx, sy, sz, gaussianCoverage(coverage), out); };
  };
  expectRefused(
      {{[&] { gaussianSmoothing3dImg(nullptr, 1); }, "InImg3d"},
       {[&] { gaussianSmoothing3dImg(in, 1, 1, 1, item, nullptr); }, "OutImg"},
       {[&] { gaussianSmoothing3dImg(in, 1, 1, 1, nullptr, out); }, "InOptSmoothingGaussianCoverage"},
       {[&] { gaussianSmoothing3dImg(in, 1, 1, 1, item, wrong); }, "differ in size"},
       {[&] { gaussianSmoothing3dImg(in, -1); }, "InStdDevX: the value is refused: -1"},
       {[&] { getAsyncProcessorOutput(gaussianSmoothing3dImg_async(in, inf)); }, "InStdDevX"},
       {[&] { getAsyncProcessorOutput(boost::shared_ptr<GaussianSmoothing3dImgLvl1>()); }, "null"},
       {call(1, -0.5f, 1, 0.9f), "InStdDevY: the value is refused: -0.5"},
       {call(1, 1, nan, 0.9f), "InStdDevZ: the value is refused: nan"},
       {call(1, 1, 1e9f, 0.9f), "InStdDevZ: the value is refused: 1e+09"},
       {call(1, 1, 1, 1), "InOptSmoothingGaussianCoverage: the value is refused: coverage: 1"}});
  EXPECT_TRUE(sameBits(*out, *before));
  EXPECT_TRUE(sameBits(*wrong, *wrongBefore));
}

}  // namespace
}  // namespace vexo::imaproc::filter
