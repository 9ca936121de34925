#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing3dImg/GaussianSmoothing3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianReference.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;

ImagePtr smooth(const boost::shared_ptr<const image::BaseImage>& in, float sx, float sy, float sz,
                eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  gaussianSmoothing3dImg(in, sx, sy, sz, gaussianCoverage(), out);
  return out;
}

void expectGaussian(const Image& in, const Image& out, double sx, double sy, double sz) {
  GaussianReference(in, out.getBufferType(), {{0, sx}, {1, sy}, {2, sz}}).expect(out);
}

class GaussianSmoothing3dPairs : public testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, GaussianSmoothing3dPairs, testing::ValuesIn(allTypes()), TypeName());

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

TEST(GaussianSmoothing3d, FlatAndThinVolumesAndLargeWindows) {
  for (const ImageGeometry& geometry :
       {ImageGeometry{1, 1, 1}, {9, 7, 1}, {9, 1, 8}, {1, 7, 8}, {1, 1, 70}, {4, 3, 2}})
    for (const auto type : {eImageBufferType::UInt8, eImageBufferType::Real32}) {
      SCOPED_TRACE(toString(geometry));
      const ImagePtr in = randomImage(geometry, type);
      expectGaussian(*in, *smooth(in, 5, 7, 6, type), 5, 7, 6);
      expectGaussian(*in, *smooth(in, 0.3f, 0.9f, 1, type), 0.3f, 0.9f, 1);
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

}  // namespace
}  // namespace vexo::imaproc::filter
