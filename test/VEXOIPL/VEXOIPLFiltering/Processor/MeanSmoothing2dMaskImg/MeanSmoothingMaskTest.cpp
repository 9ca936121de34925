// The masked means of planes and of volumes against one direct reference.

#include <cmath>
#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;
using ConstImage = boost::shared_ptr<const image::BaseImage>;

/// Half sizes; no z: the filter of planes.
struct Half {
  int x, y, z = -1;
  bool isVolume() const { return z >= 0; }
};

void smoothInto(const ConstImage& in, const ConstImage& mask, const Half& h,
                const boost::shared_ptr<image::BaseImage>& out) {
  const auto x = static_cast<std::uint32_t>(h.x), y = static_cast<std::uint32_t>(h.y);
  if (h.isVolume())
    meanSmoothing3dMaskImg(in, mask, x, y, static_cast<std::uint32_t>(h.z), out);
  else
    meanSmoothing2dMaskImg(in, mask, x, y, out);
}

ImagePtr smooth(const ConstImage& in, const ConstImage& mask, const Half& h, eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  smoothInto(in, mask, h, out);
  return out;
}

struct ForcedKernels {
  ForcedKernels(const processor::InstructionSetsIdentifier& sets)
      : planes("vexo::imaproc::filter::MeanSmoothing2dMaskImgLvl3", sets),
        volumes("vexo::imaproc::filter::MeanSmoothing3dMaskImgLvl3", sets),
        choice("vexo::imaproc::logic::MaskImgImgLvl3", sets),
        choice3d("vexo::imaproc::logic::MaskImgImg3dLvl3", sets) {}
  ForcedSets planes, volumes, choice, choice3d;
};

/// About half of the samples set, in pieces of a few, with values other than 1 and 255 too.
ImagePtr randomMask(const ImageGeometry& g) {
  const ImagePtr mask = randomImage(g, eImageBufferType::UInt8, 7);
  forEachSample(g, [&](auto x, auto y, auto z, auto c, auto t) {
    if ((x / 3 + y / 5 + z + static_cast<std::size_t>(getSample(*mask, x, y, z, c, t)) % 3) % 2 == 0)
      setSample(*mask, 0, x, y, z, c, t);
  });
  return mask;
}

template <class Set>
ImagePtr makeMask(const ImageGeometry& g, Set isSet) {
  const ImagePtr mask = Image::create(g, eImageBufferType::UInt8);
  forEachSample(g, [&](auto x, auto y, auto z, auto c, auto t) {
    setSample(*mask, isSet(x, y, z) ? 255 : 0, x, y, z, c, t);
  });
  return mask;
}

double saturated(double value, eImageBufferType type) {
  return image::visitBufferType(type, [&](auto zero) -> double {
    using T = decltype(zero);
    if (std::is_floating_point_v<T>) return value;
    if (std::isnan(value)) return 0;
    return std::min(std::max(std::round(value), double(std::numeric_limits<T>::lowest())),
                    double(std::numeric_limits<T>::max()));
  });
}

/// Mask set: the mean in double, within rounding and the error of single-precision sums, around the circle of
/// an integer output's values. Mask clear: exactly the input's value by the saturating conversion.
void expectMaskedMean(const Image& in, const Image& mask, const Image& out, const Half& h) {
  const bool real = out.getBufferType() == eImageBufferType::Real32;
  const double circle = std::pow(2.0, 8.0 * static_cast<double>(getSampleSize(out.getBufferType())));
  const double samples = (2.0 * h.x + 1) * (2.0 * h.y + 1) * (2.0 * std::max(h.z, 0) + 1);
  int failures = 0;
  forEachSample(in.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    const double found = getSample(out, x, y, z, c, t);
    double expected = 0, distance, allowed = 0;
    if (getSample(mask, x, y, z, c, t) == 0) {
      expected = saturated(getSample(in, x, y, z, c, t), out.getBufferType());
      if (real) expected = static_cast<float>(expected);
      distance = std::isnan(expected) && std::isnan(found) ? 0 : std::abs(found - expected);
    } else {
      double sum = 0, count = 0;
      const int hz = std::max(h.z, 0);
      for (int dz = -hz; dz <= hz; ++dz)
        for (int dy = -h.y; dy <= h.y; ++dy)
          for (int dx = -h.x; dx <= h.x; ++dx) {
            const std::size_t sx = mirrored(static_cast<std::ptrdiff_t>(x) + dx, in.getSizeX());
            const std::size_t sy = mirrored(static_cast<std::ptrdiff_t>(y) + dy, in.getSizeY());
            const std::size_t sz =
                h.isVolume() ? mirrored(static_cast<std::ptrdiff_t>(z) + dz, in.getSizeZ()) : z;
            if (getSample(mask, sx, sy, sz, c, t) == 0) continue;
            sum += getSample(in, sx, sy, sz, c, t);
            ++count;
          }
      expected = sum / count;
      distance = std::abs(found - expected);
      if (!real) distance = std::abs(std::remainder(found - expected, circle)) - 0.5;
      allowed = 3000.0 * samples / count * 4 *
                static_cast<double>(in.getSizeX() + in.getSizeY() + in.getSizeZ()) / (1 << 24);
    }
    if (!(distance <= allowed) && failures++ < 3)
      ADD_FAILURE() << "x " << x << " y " << y << " z " << z << ": " << found << " instead of " << expected;
  });
}

class MeanSmoothingMaskPairs : public ::testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, MeanSmoothingMaskPairs, ::testing::ValuesIn(allTypes()),
                         [](const auto& info) { return image::toString(info.param); });

TEST_P(MeanSmoothingMaskPairs, EveryOutputTypeAgreesWithTheDirectMean) {
  const ImagePtr in = randomImage({45, 140}, GetParam()), mask = randomMask({45, 140});
  const ImagePtr volume = randomImage({15, 12, 35}, GetParam()), volumeMask = randomMask({15, 12, 35});
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    expectMaskedMean(*in, *mask, *smooth(in, mask, {3, 2}, type), {3, 2});
    expectMaskedMean(*volume, *volumeMask, *smooth(volume, volumeMask, {2, 1, 2}, type), {2, 1, 2});
  }
}

TEST_P(MeanSmoothingMaskPairs, BitsDoNotDependOnHowItIsRun) {
  struct Case {
    ImageGeometry g;
    Half h;
  };
  for (const Case& test : {Case{{133, 200, 2, 1, 2}, {5, 4}}, Case{{35, 19, 50, 2}, {3, 2, 2}}}) {
    const Half& h = test.h;
    const ImagePtr in = randomImage(test.g, GetParam()), mask = randomMask(test.g);
    const ImagePtr gaps = withGaps(*in, 3), maskGaps = withGaps(*mask, 5);
    for (const auto type : allTypes()) {
      SCOPED_TRACE(image::toString(type));
      const ImagePtr expected = smooth(in, mask, h, type);
      for (const auto& sets : offeredSets()) {
        const ForcedKernels forced(sets);
        EXPECT_TRUE(sameBits(*smooth(gaps, maskGaps, h, type), *expected)) << core::toString(sets.getSets());
      }
      if (getSampleSize(type) == getSampleSize(GetParam())) {
        const ImagePtr same = copyOf(*in);
        const ImagePtr out = Image::wrap(same->getData(), in->getGeometry(), type, same->getStrides(), same);
        smoothInto(same, mask, h, out);
        EXPECT_TRUE(sameBits(*out, *expected)) << "in place";
      }
      if (type == eImageBufferType::UInt8) {
        const ImagePtr same = copyOf(*mask);
        smoothInto(in, same, h, same);
        EXPECT_TRUE(sameBits(*same, *expected)) << "into the mask";
      }
      for (const std::size_t threads : {1, 3, 7}) {
        core::ActionRunner::getInstance().setThreadCount(threads);
        EXPECT_TRUE(sameBits(*smooth(in, mask, h, type), *expected)) << threads << " threads";
        core::ActionRunner::getInstance().setThreadCount(0);
      }
    }
  }
}

TEST(MeanSmoothingMask, SmallAndThinImagesOnEveryInstructionSet) {
  struct Shape {
    ImageGeometry g;
    Half h;
  };
  std::vector<Shape> shapes = {
      {{1, 1}, {0, 0}},        {{1, 1}, {7, 9}},        {{1, 40}, {2, 3}},       {{40, 1}, {2, 3}},
      {{5, 4}, {13, 11}},      {{30, 20}, {0, 0}},      {{30, 20}, {0, 2}},      {{30, 20}, {2, 0}},
      {{2500, 6}, {2, 1}},     {{3, 100}, {40, 40}},    {{1, 1, 1}, {2, 1, 3}},  {{9, 7, 1}, {1, 1, 2}},
      {{1, 9, 7}, {1, 1, 2}},  {{9, 1, 7}, {1, 1, 2}},  {{5, 4, 6}, {8, 9, 13}}, {{9, 7, 20}, {0, 0, 0}},
      {{9, 7, 20}, {0, 0, 2}}, {{9, 7, 20}, {2, 1, 0}}, {{300, 5, 4}, {1, 1, 1}}};
  for (std::size_t width = 1; width <= 36; ++width)
    shapes.push_back({{width, 9}, {1 + static_cast<int>(width % 6), 2}});
  for (const auto& sets : offeredSets()) {
    const ForcedKernels forced(sets);
    for (const Shape& s : shapes)
      for (const auto type : {eImageBufferType::UInt8, eImageBufferType::Real32}) {
        SCOPED_TRACE(core::toString(sets.getSets()) + " " + toString(s.g));
        const ImagePtr in = randomImage(s.g, type), mask = randomMask(s.g);
        expectMaskedMean(*in, *mask, *smooth(in, mask, s.h, type), s.h);
      }
  }
}

TEST(MeanSmoothingMask, ClearSetAndChequeredMasks) {
  for (const Half& h : {Half{3, 2}, Half{2, 1, 1}}) {
    const ImageGeometry g{50, 40, 6};
    const ImagePtr in = randomImage(g, eImageBufferType::Int16);
    for (const auto type : {eImageBufferType::Int16, eImageBufferType::UInt8, eImageBufferType::Real32})
      for (const int kind : {0, 1, 2}) {
        SCOPED_TRACE(kind);
        const ImagePtr mask =
            makeMask(g, [&](auto x, auto y, auto z) { return kind == 2 ? (x + y + z) % 2 == 0 : kind == 1; });
        expectMaskedMean(*in, *mask, *smooth(in, mask, h, type), h);
      }
  }
  const ImagePtr in = randomImage({50, 40}, eImageBufferType::Real32);
  const ImagePtr set = makeMask({50, 40}, [](auto, auto, auto) { return true; });
  const ImagePtr masked = smooth(in, set, {3, 2}, eImageBufferType::Real32);
  const ImagePtr plain = Image::create({50, 40}, eImageBufferType::Real32);
  meanSmoothing2dImg(in, 3, 2, plain);
  forEachSample(in->getGeometry(), [&](auto x, auto y, auto, auto, auto) {
    EXPECT_NEAR(getSample(*masked, x, y), getSample(*plain, x, y), 0.05) << x << " " << y;
  });
}

TEST(MeanSmoothingMask, NanOutsideTheMaskEntersNothingAndStays) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  for (const auto& sets : offeredSets()) {
    const ForcedKernels forced(sets);
    for (const Half& h : {Half{3, 2}, Half{0, 0}, Half{2, 1, 1}, Half{0, 0, 0}}) {
      const ImageGeometry g{40, 30, 5};
      const ImagePtr in = randomImage(g, eImageBufferType::Real32), mask = randomMask(g);
      forEachSample(g, [&](auto x, auto y, auto z, auto, auto) {
        if (getSample(*mask, x, y, z) == 0) setSample(*in, (x + y) % 3 ? nan : inf, x, y, z);
      });
      const ImagePtr real = smooth(in, mask, h, eImageBufferType::Real32);
      const ImagePtr integer = smooth(in, mask, h, eImageBufferType::Int16);
      forEachSample(g, [&](auto x, auto y, auto z, auto, auto) {
        const double found = getSample(*real, x, y, z);
        if (getSample(*mask, x, y, z) != 0) {
          EXPECT_TRUE(std::isfinite(found)) << x << " " << y << " " << z;
        } else if ((x + y) % 3) {
          EXPECT_TRUE(std::isnan(found));
          EXPECT_EQ(getSample(*integer, x, y, z), 0);
        } else {
          EXPECT_EQ(found, inf);
          EXPECT_EQ(getSample(*integer, x, y, z), 32767);
        }
      });
    }
  }
}

TEST(MeanSmoothingMask, KeptIntegersAreExactBeyondFloats) {
  const ImagePtr in = Image::create({40, 3}, eImageBufferType::UInt32);
  forEachSample(in->getGeometry(), [&](auto x, auto y, auto, auto, auto) {
    setSample(*in, 4294967295.0 - static_cast<double>(x + 40 * y), x, y);
  });
  const ImagePtr clear = makeMask({40, 3}, [](auto, auto, auto) { return false; });
  EXPECT_TRUE(sameBits(*smooth(in, clear, {2, 1}, eImageBufferType::UInt32), *in));
  EXPECT_TRUE(sameBits(*smooth(in, clear, {2, 1, 1}, eImageBufferType::UInt32), *in));
}

TEST(MeanSmoothingMask, CallFormsAgree) {
  const ImageGeometry g{30, 20, 4};
  const ImagePtr in = randomImage(g, eImageBufferType::UInt16), mask = randomMask(g);
  const auto check = [&](const auto& created, const auto& async, const auto& asyncInto, const ImagePtr& out) {
    const Image& expected = image::hostImage(created, "created");
    EXPECT_EQ(created->getBufferType(), eImageBufferType::UInt16);
    EXPECT_TRUE(sameBits(image::hostImage(getAsyncProcessorOutput(async), "async"), expected));
    EXPECT_EQ(getAsyncProcessorOutput(asyncInto), out);
    EXPECT_TRUE(sameBits(*out, expected));
  };
  const ImagePtr out = Image::create(g, eImageBufferType::UInt16);
  check(meanSmoothing2dMaskImg(in, mask, 2, 1), meanSmoothing2dMaskImg_async(in, mask, 2, 1),
        meanSmoothing2dMaskImg_async(in, mask, 2, 1, out), out);
  check(meanSmoothing3dMaskImg(in, mask, 2, 1, 1), meanSmoothing3dMaskImg_async(in, mask, 2, 1, 1),
        meanSmoothing3dMaskImg_async(in, mask, 2, 1, 1, out), out);
}

TEST(MeanSmoothingMask, BadMasksAreRefusedByName) {
  const ImagePtr in = randomImage({20, 10, 3}, eImageBufferType::UInt8);
  const ImagePtr out = copyOf(*in), before = copyOf(*out);
  const auto expectRefused = [&](const ImagePtr& mask, const Half& h, const std::vector<std::string>& words) {
    try {
      smoothInto(in, mask, h, out);
      ADD_FAILURE() << words[0] << ": nothing was thrown";
    } catch (const BaseException& failure) {
      for (const std::string& word : words)
        EXPECT_NE(failure.getMessage().find(word), std::string::npos) << failure.what();
    }
  };
  const ImagePtr wrongSize = randomImage({20, 11, 3}, eImageBufferType::UInt8);
  const ImagePtr wrongType = randomImage({20, 10, 3}, eImageBufferType::UInt16);
  expectRefused(wrongSize, {1, 1}, {"InMaskImg", "20 x 11"});
  expectRefused(wrongSize, {1, 1, 1}, {"InBinImg3d", "20 x 11"});
  expectRefused(wrongType, {1, 1}, {"InMaskImg", "uint16"});
  expectRefused(wrongType, {1, 1, 1}, {"InBinImg3d", "uint16"});
  expectRefused(nullptr, {1, 1}, {"InMaskImg"});
  const ImagePtr mask = randomImage({20, 10, 3}, eImageBufferType::UInt8);
  expectRefused(mask, {813, 813, 813}, {"InHalfKnlSizeZ", "4306878883"});
  EXPECT_TRUE(sameBits(*out, *before));
}

}  // namespace
}  // namespace vexo::imaproc::filter
