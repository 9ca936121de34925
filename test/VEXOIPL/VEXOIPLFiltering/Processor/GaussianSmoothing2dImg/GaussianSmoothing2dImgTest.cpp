#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianSmoothing2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianReference.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;

const char* const kernelClass = "vexo::imaproc::filter::Convolution2dImgLvl3";

ImagePtr smooth(const boost::shared_ptr<const image::BaseImage>& in, float sx, float sy,
                eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  gaussianSmoothing2dImg(in, sx, sy, gaussianCoverage(), out);
  return out;
}

void expectGaussian(const Image& in, const Image& out, double sx, double sy) {
  GaussianReference(in, out.getBufferType(), {{1, sy}, {0, sx}}).expect(out);
}

class GaussianSmoothing2dPairs : public ::testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, GaussianSmoothing2dPairs, ::testing::ValuesIn(allTypes()),
                         [](const auto& info) { return image::toString(info.param); });

TEST_P(GaussianSmoothing2dPairs, EveryOutputTypeAgreesWithTheDirectGaussian) {
  const ImagePtr in = randomImage({45, 150}, GetParam());
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    const GaussianReference reference(*in, type, {{1, 0.8}, {0, 1.7}});
    reference.expect(*smooth(in, 1.7f, 0.8f, type));
    if (getSampleSize(type) < 4) {
      EXPECT_GT(reference.exactPart(), 0.9);
    }
  }
}

// Strips of 64 rows and more give the 200 rows several seams.
TEST_P(GaussianSmoothing2dPairs, BitsDoNotDependOnHowItIsRun) {
  const ImagePtr in = randomImage({83, 200, 2}, GetParam());
  const ImagePtr gaps = withGaps(*in, 3);
  for (const auto type : {eImageBufferType::UInt8, eImageBufferType::Int16, GetParam()}) {
    SCOPED_TRACE(image::toString(type));
    const ImagePtr expected = smooth(in, 1, 2, type);
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(kernelClass, sets);
      EXPECT_TRUE(sameBits(*smooth(in, 1, 2, type), *expected)) << core::toString(sets.getSets());
      EXPECT_TRUE(sameBits(*smooth(gaps, 1, 2, type), *expected))
          << "gaps, " << core::toString(sets.getSets());
    }
    for (const std::size_t threads : {1, 3, 7}) {
      core::ActionRunner::getInstance().setThreadCount(threads);
      EXPECT_TRUE(sameBits(*smooth(in, 1, 2, type), *expected)) << threads << " threads";
      const ImagePtr same = copyOf(*in);
      gaussianSmoothing2dImg(same, 1, 2, gaussianCoverage(), same);
      EXPECT_TRUE(sameBits(*same, *smooth(in, 1, 2, GetParam()))) << "in place, " << threads << " threads";
      core::ActionRunner::getInstance().setThreadCount(0);
    }
  }
}

// The result of Y is stored in the output's type before X is smoothed.
TEST(GaussianSmoothing2d, EachAxisIsConvertedAndYComesFirst) {
  const ImagePtr in = randomImage({60, 50}, eImageBufferType::UInt8);
  const ImagePtr both = smooth(in, 1.2f, 1.2f, eImageBufferType::UInt8);
  const ImagePtr y = smooth(in, 0, 1.2f, eImageBufferType::UInt8);
  const ImagePtr yx = smooth(y, 1.2f, 0, eImageBufferType::UInt8);
  const ImagePtr xy = smooth(smooth(in, 1.2f, 0, eImageBufferType::UInt8), 0, 1.2f, eImageBufferType::UInt8);
  EXPECT_TRUE(sameBits(*both, *yx));
  EXPECT_FALSE(sameBits(*both, *xy));
  const ImagePtr once = Image::create(in->getGeometry(), eImageBufferType::UInt8);
  const ImagePtr real = smooth(in, 1.2f, 1.2f, eImageBufferType::Real32);
  forEachSample(in->getGeometry(), [&](auto x, auto row, auto, auto, auto) {
    setSample(*once, std::round(getSample(*real, x, row)), x, row);
  });
  EXPECT_FALSE(sameBits(*both, *once));

  // 1000 becomes 232 after Y, and a constant image stays what it is after X.
  const ImagePtr constant = Image::create({9, 9}, eImageBufferType::UInt16);
  forEachSample(constant->getGeometry(),
                [&](auto x, auto row, auto, auto, auto) { setSample(*constant, 1000, x, row); });
  const ImagePtr wrapped = smooth(constant, 1, 1, eImageBufferType::UInt8);
  forEachSample(constant->getGeometry(),
                [&](auto x, auto row, auto, auto, auto) { EXPECT_EQ(getSample(*wrapped, x, row), 232); });
}

TEST(GaussianSmoothing2d, AllCallFormsGiveTheSameImage) {
  const ImagePtr in = randomImage({70, 130}, eImageBufferType::UInt16);
  const auto created = gaussianSmoothing2dImg(in, 1.5f);
  EXPECT_EQ(created->getGeometry(), in->getGeometry());
  EXPECT_EQ(created->getBufferType(), in->getBufferType());
  const Image& expected = image::hostImage(created, "created");
  const auto defaults = attr::InOptSmoothingGaussianCoverage::defaultValue();
  const auto isExpected = [&](const boost::shared_ptr<const image::BaseImage>& out) {
    return sameBits(image::hostImage(out, "out"), expected);
  };
  EXPECT_TRUE(isExpected(gaussianSmoothing2dImg(in, 1.5f, 1.5f, defaults)));
  EXPECT_TRUE(isExpected(smooth(in, 1.5f, 1.5f, eImageBufferType::UInt16)));
  EXPECT_TRUE(isExpected(getAsyncProcessorOutput(gaussianSmoothing2dImg_async(in, 1.5f))));
  EXPECT_TRUE(isExpected(getAsyncProcessorOutput(gaussianSmoothing2dImg_async(in, 1.5f, 1.5f, defaults))));
  const ImagePtr out = Image::create(in->getGeometry(), eImageBufferType::UInt16);
  EXPECT_EQ(getAsyncProcessorOutput(gaussianSmoothing2dImg_async(in, 1.5f, 1.5f, defaults, out)), out);
  EXPECT_TRUE(isExpected(out));
}

TEST(GaussianSmoothing2d, CoverageAndItsLimitDecideTheWindow) {
  const ImagePtr in = randomImage({40, 30}, eImageBufferType::Real32);
  for (const float coverage : {0.5f, 0.9999f})
    for (const int limit : {0, 2}) {
      const auto item = gaussianCoverage(coverage, static_cast<std::uint32_t>(limit));
      const auto out = gaussianSmoothing2dImg(in, 2, 1, item);
      GaussianReference(*in, eImageBufferType::Real32, {{1, 1}, {0, 2}}, coverage, limit)
          .expect(image::hostImage(out, "out"));
    }
  // A deviation that no kernel could cover, cut to one that can be.
  const auto flat = gaussianSmoothing2dImg(in, 1e9f, 1e9f, gaussianCoverage(0.997f, 2));
  GaussianReference(*in, eImageBufferType::Real32, {{1, 1e9}, {0, 1e9}}, 0.5, 2)
      .expect(image::hostImage(flat, "out"));
}

TEST(GaussianSmoothing2d, EveryPlaneIsSmoothedOnItsOwn) {
  const ImagePtr in = randomImage({20, 17, 3, 2, 2}, eImageBufferType::Int16);
  for (const auto type : {eImageBufferType::Real32, eImageBufferType::Int16})
    expectGaussian(*in, *smooth(in, 2, 1, type), 2, 1);
}

TEST(GaussianSmoothing2d, SmallImagesAndLargeWindows) {
  for (const ImageGeometry& geometry : {ImageGeometry{1, 1}, {1, 40}, {40, 1}, {5, 4}, {2, 3, 2}, {70, 3}})
    for (const auto type : {eImageBufferType::UInt8, eImageBufferType::Real32}) {
      SCOPED_TRACE(toString(geometry));
      const ImagePtr in = randomImage(geometry, type);
      const ImagePtr untouched = copyOf(*in);
      expectGaussian(*in, *smooth(in, 5, 7, type), 5, 7);
      expectGaussian(*in, *smooth(in, 0.3f, 0.9f, type), 0.3f, 0.9f);
      EXPECT_TRUE(sameBits(*in, *untouched));
    }
}

TEST(GaussianSmoothing2d, NoDeviationLeavesTheAxis) {
  for (const auto type : allTypes()) {
    const ImagePtr in = randomImage({40, 70}, type);
    EXPECT_TRUE(sameBits(*smooth(in, 0, 0, type), *in)) << image::toString(type);
    expectGaussian(*in, *smooth(in, 2, 0, type), 2, 0);
    expectGaussian(*in, *smooth(in, 0, 2, type), 0, 2);
  }
}

TEST(GaussianSmoothing2d, BadCallsNameWhatIsWrongAndTouchNothing) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const ImagePtr in = randomImage({20, 10}, eImageBufferType::UInt8);
  const ImagePtr out = randomImage({20, 10}, eImageBufferType::Int16, 2);
  const ImagePtr before = copyOf(*out);
  const ImagePtr wrong = randomImage({20, 11}, eImageBufferType::UInt8, 2);
  const ImagePtr wrongBefore = copyOf(*wrong);
  const auto item = gaussianCoverage();
  const auto call = [&](float sx, float sy, float coverage, std::uint32_t limit = 0) {
    return [=] { gaussianSmoothing2dImg(in, sx, sy, gaussianCoverage(coverage, limit), out); };
  };
  expectRefused({{[&] { gaussianSmoothing2dImg(nullptr, 1); }, "InImg"},
                 {[&] { gaussianSmoothing2dImg(in, 1, 1, item, nullptr); }, "OutImg"},
                 {[&] { gaussianSmoothing2dImg(in, 1, 1, nullptr, out); }, "InOptSmoothingGaussianCoverage"},
                 {[&] { gaussianSmoothing2dImg(in, 1, 1, item, wrong); }, "20 x 11"},
                 {[&] { gaussianSmoothing2dImg(in, -1); }, "InStdDevX: the value is refused: -1"},
                 {[&] { getAsyncProcessorOutput(gaussianSmoothing2dImg_async(in, nan)); }, "InStdDevX"},
                 {[&] { getAsyncProcessorOutput(boost::shared_ptr<GaussianSmoothing2dImgLvl1>()); }, "null"},
                 {call(1, -0.5f, 0.9f), "InStdDevY: the value is refused: -0.5"},
                 {call(1, nan, 0.9f), "InStdDevY: the value is refused: nan"},
                 {call(inf, 1, 0.9f), "InStdDevX: the value is refused: inf"},
                 {call(1e9f, 1, 0.9f), "InStdDevX: the value is refused: 1e+09"},
                 {call(1, 1e9f, 0.9f, 32768), "32767"},
                 {call(1, 1, 0), "InOptSmoothingGaussianCoverage: the value is refused: coverage: 0"},
                 {call(1, 1, 1), "InOptSmoothingGaussianCoverage: the value is refused: coverage: 1"},
                 {call(1, 1, nan), "InOptSmoothingGaussianCoverage: the value is refused: coverage: nan"}});
  EXPECT_TRUE(sameBits(*out, *before));
  EXPECT_TRUE(sameBits(*wrong, *wrongBefore));
}

// The samples would need 4 exabytes: were the output created before the deviation is refused, the message
// would be another.
TEST(GaussianSmoothing2d, BadDeviationsAreRefusedBeforeMemoryIsTaken) {
  const std::uint8_t sample = 0;
  const auto huge = Image::wrapConst(&sample, {1u << 31, 1u << 31}, eImageBufferType::UInt8, {});
  expectRefused({{[&] { gaussianSmoothing2dImg(huge, -1); }, "InStdDevX: the value is refused: -1"}});
}

TEST(GaussianSmoothing2d, RunsAgainWithOtherValues) {
  const ImagePtr in = randomImage({40, 30}, eImageBufferType::Real32);
  GaussianSmoothing2dImgLvl1 processor;
  processor.init();
  processor.set<attr::InImg>(in);
  processor.set<attr::InStdDevY>(1);
  for (const float s : {1.f, 3.f}) {
    processor.set<attr::InStdDevX>(s);
    ASSERT_TRUE(processor.run(core::eSynchroType::Synchronous));
    expectGaussian(*in, image::hostImage(processor.getStorage<attr::OutImg>(), "out"), s, 1);
  }
}

}  // namespace
}  // namespace vexo::imaproc::filter
