#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianSmoothing2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianReference.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;

ImagePtr smooth(const boost::shared_ptr<const image::BaseImage>& in, float sx, float sy,
                eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  gaussianSmoothing2dImg(in, sx, sy, gaussianCoverage(), out);
  return out;
}

void expectGaussian(const Image& in, const Image& out, double sx, double sy) {
  GaussianReference(in, out.getBufferType(), {{1, sy}, {0, sx}}).expect(out);
}

class GaussianSmoothing2dPairs : public testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, GaussianSmoothing2dPairs, testing::ValuesIn(allTypes()), TypeName());

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

// The result of Y is stored in the output's type before X is smoothed.
TEST(GaussianSmoothing2d, EachAxisIsConvertedAndYComesFirst) {
  const ImagePtr in = randomImage({60, 50}, eImageBufferType::UInt8);
  const ImagePtr both = smooth(in, 1.2f, 1.2f, eImageBufferType::UInt8);
  const ImagePtr y = smooth(in, 0, 1.2f, eImageBufferType::UInt8);
  const ImagePtr yx = smooth(y, 1.2f, 0, eImageBufferType::UInt8);
  const ImagePtr xy = smooth(smooth(in, 1.2f, 0, eImageBufferType::UInt8), 0, 1.2f, eImageBufferType::UInt8);
  EXPECT_TRUE(sameBits(*both, *yx));
  EXPECT_FALSE(sameBits(*both, *xy));
  const ImagePtr real = smooth(in, 1.2f, 1.2f, eImageBufferType::Real32);
  const ImagePtr once = makeImage(in->getGeometry(), eImageBufferType::UInt8,
                                  [&](auto... at) { return std::round(getSample(*real, at...)); });
  EXPECT_FALSE(sameBits(*both, *once));

  // 1000 becomes 232 after Y, and a constant image stays what it is after X.
  expectSamples(*smooth(constantImage({9, 9}, eImageBufferType::UInt16, 1000), 1, 1, eImageBufferType::UInt8),
                [](auto...) { return 232; });
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

TEST(GaussianSmoothing2d, SmallImagesAndLargeWindows) {
  for (const ImageGeometry& geometry : {ImageGeometry{1, 1}, {1, 40}, {40, 1}, {5, 4}, {2, 3, 2}, {70, 3}})
    for (const auto type : {eImageBufferType::UInt8, eImageBufferType::Real32}) {
      SCOPED_TRACE(toString(geometry));
      const ImagePtr in = randomImage(geometry, type);
      expectGaussian(*in, *smooth(in, 5, 7, type), 5, 7);
      expectGaussian(*in, *smooth(in, 0.3f, 0.9f, type), 0.3f, 0.9f);
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

// The samples would need 4 exabytes: were the output created before the deviation is refused, the message
// would be another.
TEST(GaussianSmoothing2d, BadDeviationsAreRefusedBeforeMemoryIsTaken) {
  const std::uint8_t sample = 0;
  const auto huge = Image::wrapConst(&sample, {1u << 31, 1u << 31}, eImageBufferType::UInt8, {});
  expectFailure({"InStdDevX: the value is refused: -1"}, [&] { gaussianSmoothing2dImg(huge, -1); });
  expectFailure({"32767"}, [&] { gaussianSmoothing2dImg(huge, 1e9f, 1, gaussianCoverage(0.9f, 32768)); });
}

}  // namespace
}  // namespace vexo::imaproc::filter
