#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothing3dImgLvl1.h"

#include <cmath>
#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;

const char* const kernelClass = "vexo::imaproc::filter::MeanSmoothingZ3dImgLvl3";
const char* const planeKernelClass = "vexo::imaproc::filter::MeanSmoothing2dImgLvl3";

struct Half {
  int x, y, z;
};

double directMean(const Image& in, std::size_t x, std::size_t y, std::size_t z, std::size_t c, std::size_t t,
                  const Half& h) {
  double sum = 0;
  for (int dz = -h.z; dz <= h.z; ++dz)
    for (int dy = -h.y; dy <= h.y; ++dy)
      for (int dx = -h.x; dx <= h.x; ++dx)
        sum += getSample(in, mirrored(static_cast<std::ptrdiff_t>(x) + dx, in.getSizeX()),
                         mirrored(static_cast<std::ptrdiff_t>(y) + dy, in.getSizeY()),
                         mirrored(static_cast<std::ptrdiff_t>(z) + dz, in.getSizeZ()), c, t);
  return sum / ((2.0 * h.x + 1) * (2.0 * h.y + 1) * (2.0 * h.z + 1));
}

ImagePtr smooth(const boost::shared_ptr<const image::BaseImage>& in, const Half& h, eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  meanSmoothing3dImg(in, static_cast<std::uint32_t>(h.x), static_cast<std::uint32_t>(h.y),
                     static_cast<std::uint32_t>(h.z), out);
  return out;
}

/// Integer outputs are rounded twice: each slice, then their mean. Values that would wrap are kept out of the
/// inputs.
void expectMean(const Image& in, const Image& out, const Half& h) {
  const bool real = out.getBufferType() == eImageBufferType::Real32;
  const double allowed =
      3000.0 * 4 * static_cast<double>(in.getSizeX() + in.getSizeY() + in.getSizeZ()) / (1 << 24) +
      (real ? 0.0 : 1.0);
  int failures = 0;
  forEachSample(in.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    const double expected = directMean(in, x, y, z, c, t, h);
    if (std::abs(getSample(out, x, y, z, c, t) - expected) > allowed && failures++ < 3)
      ADD_FAILURE() << "x " << x << " y " << y << " z " << z << ": " << getSample(out, x, y, z, c, t)
                    << " instead of " << expected;
  });
}

/// Values from 0 to 100, which every type holds.
ImagePtr smallImage(const ImageGeometry& g, eImageBufferType type) {
  const ImagePtr noise = randomImage(g, eImageBufferType::UInt8);
  const ImagePtr result = Image::create(g, type);
  forEachSample(g, [&](auto x, auto y, auto z, auto c, auto t) {
    setSample(*result, std::fmod(getSample(*noise, x, y, z, c, t), 101), x, y, z, c, t);
  });
  return result;
}

class MeanSmoothing3dPairs : public ::testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, MeanSmoothing3dPairs, ::testing::ValuesIn(allTypes()),
                         [](const auto& info) { return image::toString(info.param); });

TEST_P(MeanSmoothing3dPairs, EveryOutputTypeAgreesWithTheDirectMean) {
  const ImagePtr in = smallImage({21, 14, 37}, GetParam());
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    expectMean(*in, *smooth(in, {2, 1, 2}, type), {2, 1, 2});
  }
}

// 100 slices give several strips.
TEST_P(MeanSmoothing3dPairs, BitsDoNotDependOnHowItIsRun) {
  const ImagePtr in = randomImage({35, 19, 100, 1, 2}, GetParam());
  const ImagePtr gaps = withGaps(*in, 3);
  const Half h{3, 2, 2};
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    const ImagePtr expected = smooth(in, h, type);
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(kernelClass, sets), forcedPlanes(planeKernelClass, sets);
      EXPECT_TRUE(sameBits(*smooth(in, h, type), *expected)) << core::toString(sets.getSets());
      EXPECT_TRUE(sameBits(*smooth(gaps, h, type), *expected)) << "gaps, " << core::toString(sets.getSets());
      if (getSampleSize(type) == getSampleSize(GetParam())) {
        const ImagePtr same = copyOf(*in);
        const ImagePtr out = Image::wrap(same->getData(), in->getGeometry(), type, same->getStrides(), same);
        meanSmoothing3dImg(same, 3, 2, 2, out);
        EXPECT_TRUE(sameBits(*out, *expected)) << "in place, " << core::toString(sets.getSets());
      }
    }
    for (const std::size_t threads : {1, 3, 7}) {
      core::ActionRunner::getInstance().setThreadCount(threads);
      EXPECT_TRUE(sameBits(*smooth(in, h, type), *expected)) << threads << " threads";
      core::ActionRunner::getInstance().setThreadCount(0);
    }
  }
}

TEST(MeanSmoothing3d, ThinVolumesAndWindowsBeyondTheVolume) {
  struct Shape {
    ImageGeometry g;
    Half h;
  };
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(kernelClass, sets), forcedPlanes(planeKernelClass, sets);
    for (const Shape& s : std::vector<Shape>{{{1, 1, 1}, {3, 2, 4}},
                                             {{17, 9, 1}, {1, 1, 3}},
                                             {{1, 9, 17}, {2, 1, 3}},
                                             {{17, 1, 9}, {1, 2, 3}},
                                             {{6, 5, 7}, {7, 6, 19}},
                                             {{5, 4, 40}, {0, 0, 3}},
                                             {{1100, 3, 5}, {1, 1, 1}}})
      for (const auto type : {eImageBufferType::UInt8, eImageBufferType::Real32}) {
        SCOPED_TRACE(toString(s.g));
        const ImagePtr in = smallImage(s.g, type);
        expectMean(*in, *smooth(in, s.h, type), s.h);
        const ImagePtr same = copyOf(*in);
        meanSmoothing3dImg(same, static_cast<std::uint32_t>(s.h.x), static_cast<std::uint32_t>(s.h.y),
                           static_cast<std::uint32_t>(s.h.z), same);
        EXPECT_TRUE(sameBits(*same, *smooth(in, s.h, type)));
      }
  }
}

TEST(MeanSmoothing3d, WithoutZItIsTheFilterOfPlanes) {
  const ImagePtr in = randomImage({40, 30, 20}, eImageBufferType::Real32);
  const ImagePtr planes = Image::create(in->getGeometry(), eImageBufferType::Int16);
  meanSmoothing2dImg(in, 2, 3, planes);
  EXPECT_TRUE(sameBits(*smooth(in, {2, 3, 0}, eImageBufferType::Int16), *planes));
  EXPECT_TRUE(sameBits(*smooth(in, {0, 0, 0}, eImageBufferType::Real32), *in));
}

TEST(MeanSmoothing3d, IntegerOutputsAreRoundedBeforeAndAfterZ) {
  const ImagePtr in = Image::create({2, 1, 3}, eImageBufferType::Real32);
  for (std::size_t z = 0; z < 3; ++z)
    for (std::size_t x = 0; x < 2; ++x) setSample(*in, z == 1 ? 300.2 : 0.4, x, 0, z);
  // Slices become 0, 44 and 0; the mean of the middle is 14.67, that of the first (0 + 0 + 44) / 3.
  const ImagePtr out = smooth(in, {1, 0, 1}, eImageBufferType::UInt8);
  for (std::size_t z = 0; z < 3; ++z) EXPECT_EQ(getSample(*out, 0, 0, z), 15) << z;
}

TEST(MeanSmoothing3d, NanSpreadsRightDownAndBackwardOnly) {
  const ImagePtr in = randomImage({20, 18, 40}, eImageBufferType::Real32);
  const ImagePtr clean = smooth(in, {2, 3, 1}, eImageBufferType::Real32);
  setSample(*in, std::numeric_limits<double>::quiet_NaN(), 10, 9, 20);
  const ImagePtr out = smooth(in, {2, 3, 1}, eImageBufferType::Real32);
  forEachSample(out->getGeometry(), [&](auto x, auto y, auto z, auto, auto) {
    if (x < 8 || y < 6 || z < 19) {
      EXPECT_EQ(getSample(*out, x, y, z), getSample(*clean, x, y, z)) << x << " " << y << " " << z;
    } else if (x <= 12 && y <= 12 && z <= 21) {
      EXPECT_TRUE(std::isnan(getSample(*out, x, y, z))) << x << " " << y << " " << z;
    }
  });
}

TEST(MeanSmoothing3d, CallFormsAgreeAndBadCallsNameWhatIsWrong) {
  const ImagePtr in = randomImage({30, 20, 10, 2}, eImageBufferType::UInt16);
  const auto created = meanSmoothing3dImg(in, 2, 1, 1);
  const Image& expected = image::hostImage(created, "created");
  EXPECT_TRUE(sameBits(*smooth(in, {2, 1, 1}, eImageBufferType::UInt16), expected));
  EXPECT_TRUE(sameBits(
      image::hostImage(getAsyncProcessorOutput(meanSmoothing3dImg_async(in, 2, 1, 1)), "async"), expected));
  const ImagePtr out = Image::create(in->getGeometry(), eImageBufferType::UInt16);
  EXPECT_EQ(getAsyncProcessorOutput(meanSmoothing3dImg_async(in, 2, 1, 1, out)), out);
  EXPECT_TRUE(sameBits(*out, expected));

  const auto expectRefused = [](const std::function<void()>& call, const char* words) {
    try {
      call();
      ADD_FAILURE() << words << ": nothing was thrown";
    } catch (const BaseException& failure) {
      EXPECT_NE(failure.getMessage().find(words), std::string::npos) << failure.what();
    }
  };
  expectRefused([&] { meanSmoothing3dImg(nullptr, 1, 1, 1); }, "InImg3d");
  expectRefused([&] { meanSmoothing3dImg(in, 1, 1, 32768); }, "InHalfKnlSizeZ: the value is refused: 32768");
  expectRefused(
      [&] {
        meanSmoothing3dImg(in, 1, 1, 1, randomImage({30, 20, 9, 2}, eImageBufferType::UInt8));
      },
      "differ in size");
}

}  // namespace
}  // namespace vexo::imaproc::filter
