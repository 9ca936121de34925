#include "VEXOImage/Image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "VEXOCore/Buffer.h"
#include "VEXOCore/Gpu.h"
#include "VEXOImage/CudaImage.h"
#include "VEXOImage/TestTools.h"

namespace {

using namespace vexo;
using namespace vexo::image;
using namespace vexo::test;

constexpr std::size_t huge = std::numeric_limits<std::size_t>::max();

class SampleType : public testing::TestWithParam<int> {
protected:
  eImageBufferType type() const { return static_cast<eImageBufferType>(GetParam()); }
  std::ptrdiff_t size() const { return static_cast<std::ptrdiff_t>(getSampleSize(type())); }
};
INSTANTIATE_TEST_SUITE_P(Types, SampleType, testing::Range(0, static_cast<int>(imageBufferTypeCount)),
                         [](const auto& info) {
                           return std::string(toString(static_cast<eImageBufferType>(info.param)));
                         });

TEST_P(SampleType, NameSizeAndVisitorAgree) {
  eImageBufferType read =
      type() == eImageBufferType::UInt8 ? eImageBufferType::Int8 : eImageBufferType::UInt8;
  ASSERT_TRUE(fromString(toString(type()), read));
  EXPECT_EQ(read, type());
  visitBufferType(type(), [&](auto zero) {
    using T = decltype(zero);
    EXPECT_EQ(sizeof(T), getSampleSize(type()));
    EXPECT_EQ(bufferTypeOf<T>(), type());
    const std::string name = (std::is_same_v<T, float> ? "float"
                              : std::is_signed_v<T>    ? "int"
                                                       : "uint") +
                             std::to_string(8 * sizeof(T));
    EXPECT_EQ(toString(type()), name);
  });
}

TEST(SampleTypeName, UnknownNamesListTheKnownOnes) {
  eImageBufferType type = eImageBufferType::Int16;
  for (const char* name : {"", "UINT8", "uint8 ", "float64"}) {
    const BoolResult result = fromString(name, type);
    ASSERT_FALSE(result);
    EXPECT_TRUE(has(result.getMessage(), "uint8, int8, uint16, int16, uint32, int32, float32"));
  }
  EXPECT_EQ(type, eImageBufferType::Int16);
}

TEST_P(SampleType, RefusesSizesThatDoNotFit) {
  for (const ImageGeometry& g : {ImageGeometry{0, 3}, ImageGeometry{3, 0}, ImageGeometry{3, 4, 0},
                                 ImageGeometry{3, 4, 5, 0}, ImageGeometry{3, 4, 5, 6, 0}})
    EXPECT_TRUE(has(messageOf([&] { Image::create(g, type()); }), toString(g)));
  // The products wrap around to something small or negative.
  for (const ImageGeometry& g : {ImageGeometry{huge, 1}, ImageGeometry{huge / 2 + 1, 2},
                                 ImageGeometry{std::size_t(1) << 32, 1, 1, 1, std::size_t(1) << 32},
                                 ImageGeometry{1, huge / 2 + 2}, ImageGeometry{3, 7, huge / 3}}) {
    EXPECT_TRUE(has(messageOf([&] { Image::create(g, type()); }), toString(g)));
    EXPECT_TRUE(has(messageOf([&] { CudaImage::create(g, type()); }), toString(g)));
    double sample = 0;
    EXPECT_TRUE(has(messageOf([&] { Image::wrapConst(&sample, g, type(), {}); }), toString(g)));
  }
}

TEST_P(SampleType, EverySampleHasItsOwnAddress) {
  const ImageGeometry g{3, 4, 5, 2, 3};
  const auto image = Image::create(g, type());
  std::set<const void*> addresses;
  forEachSample(g, [&](std::size_t x, std::size_t y, std::size_t z, std::size_t c, std::size_t t) {
    addresses.insert(static_cast<const char*>(image->getRow(y, z, c, t)) +
                     static_cast<std::ptrdiff_t>(x) * size());
  });
  EXPECT_EQ(addresses.size(), 360u);
  EXPECT_EQ(*addresses.begin(), image->getData());
  EXPECT_EQ(static_cast<const char*>(*addresses.rbegin()) - static_cast<const char*>(image->getData()),
            359 * size());
}

TEST_P(SampleType, WrapChecksAddressAndStrides) {
  std::vector<double> memory(200);
  auto* const data = reinterpret_cast<char*>(memory.data());
  const ImageGeometry g{5, 4};
  EXPECT_TRUE(has(messageOf([&] { Image::wrap(nullptr, g, type(), {5 * size()}); }), "null"));
  EXPECT_TRUE(has(messageOf([&] { Image::wrapConst(nullptr, g, type(), {5 * size()}); }), "null"));
  if (size() > 1) {
    EXPECT_TRUE(has(messageOf([&] { Image::wrap(data + 1, g, type(), {5 * size()}); }), "aligned"));
    for (const std::ptrdiff_t stride : {6 * size() + 1, -6 * size() - 1}) {
      EXPECT_TRUE(has(messageOf([&] { Image::wrap(data, g, type(), {stride}); }), std::to_string(stride)));
      EXPECT_TRUE(
          has(messageOf([&] { Image::wrapConst(data, g, type(), {stride}); }), std::to_string(stride)));
    }
  }
  for (const std::ptrdiff_t samples : {0, 1, 4, -4}) {
    EXPECT_TRUE(has(messageOf([&] { Image::wrap(data + 400, g, type(), {samples * size()}); }), "overlap"));
    EXPECT_EQ(Image::wrapConst(data + 400, g, type(), {samples * size()})->getStrides().y, samples * size());
  }
  // Slices that begin inside the rows of the slice before; the shorter stride need not be that of y.
  EXPECT_TRUE(has(messageOf([&] {
                    Image::wrap(data, {5, 4, 3}, type(), {5 * size(), 19 * size()});
                  }),
                  "overlap"));
  EXPECT_NO_THROW(Image::wrap(data, {5, 4, 3}, type(), {15 * size(), 5 * size()}));
  EXPECT_TRUE(has(messageOf([&] {
                    Image::wrap(data, {5, 4, 3}, type(), {14 * size(), 5 * size()});
                  }),
                  "overlap"));
  // Strides of axes with one position mean nothing.
  EXPECT_NO_THROW(Image::wrap(data, {5, 1, 3}, type(), {1, 5 * size(), -3, 7}));
  EXPECT_TRUE(
      has(messageOf([&] { Image::wrap(data, g, type(), {std::numeric_limits<std::ptrdiff_t>::min()}); }),
          "address space"));
}

TEST_P(SampleType, NegativeStridesTurnAnImageOver) {
  const auto image = makeRandom({6, 5, 3}, type(), 7);
  const ImageStrides s = image->getStrides();
  const auto turned = Image::wrap(image->getRow(4, 2), image->getGeometry(), type(), {-s.y, -s.z});
  forEachSample(image->getGeometry(),
                [&](std::size_t x, std::size_t y, std::size_t z, std::size_t, std::size_t) {
                  ASSERT_EQ(getSample(*turned, x, y, z), getSample(*image, x, 4 - y, 2 - z));
                });
  const auto copy = Image::create(image->getGeometry(), type());
  copySamples(*turned, *copy);
  EXPECT_TRUE(sameSamples(*turned, *copy));
  EXPECT_EQ(getOverlap(*image, *turned), eOverlap::Partial);
}

TEST(SubImage, SharesTheSamplesAndKeepsThemAlive) {
  const ImageGeometry g{4, 3, 5, 2, 3};
  auto image = makeRandom(g, eImageBufferType::Int16, 1);
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t first = 0; first < g.z; ++first)
        for (std::size_t slices = 1; first + slices <= g.z; ++slices) {
          const boost::shared_ptr<BaseImage> part = image->getSubImage(first, slices, c, t);
          ASSERT_EQ(part->getGeometry(), (ImageGeometry{4, 3, slices, 1, 1}));
          Image& host = hostImage(part, "part");
          setSample(host, 1000.0 + slices, 3, 2, slices - 1);
          ASSERT_EQ(getSample(*image, 3, 2, first + slices - 1, c, t), 1000.0 + slices);
          ASSERT_EQ(host.getRow(0), image->getRow(0, first, c, t));
        }
  const auto part = image->getSubImage(4, 1, 1, 2);
  const double sample = getSample(*image, 1, 1, 4, 1, 2);
  image.reset();
  EXPECT_EQ(getSample(hostImage(part, "part"), 1, 1), sample);
}

TEST(SubImage, RangesOutsideAreRefused) {
  const auto image = Image::create({4, 3, 5, 2, 3}, eImageBufferType::UInt8);
  for (const auto& range : std::vector<std::vector<std::size_t>>{{0, 0, 0, 0},
                                                                 {0, 6, 0, 0},
                                                                 {5, 1, 0, 0},
                                                                 {4, 2, 0, 0},
                                                                 {4, huge, 0, 0},
                                                                 {huge, 2, 0, 0},
                                                                 {0, 5, 2, 0},
                                                                 {0, 5, 0, 3}})
    EXPECT_TRUE(
        has(messageOf([&] { image->getSubImage(range[0], range[1], range[2], range[3]); }), "4 x 3 x 5"));
}

/// The addresses of all bytes of an image.
std::set<const char*> bytesOf(const Image& image) {
  std::set<const char*> bytes;
  const std::size_t row = image.getSizeX() * getSampleSize(image.getBufferType());
  const ImageGeometry& g = image.getGeometry();
  forEachSample({row, g.y, g.z, g.c, g.t},
                [&](std::size_t x, std::size_t y, std::size_t z, std::size_t c, std::size_t t) {
                  bytes.insert(static_cast<const char*>(image.getRow(y, z, c, t)) + x);
                });
  return bytes;
}

struct OverlapCase {
  const char* name;
  std::size_t first, second;  // byte offsets
  ImageGeometry sizeA, sizeB;
  ImageStrides stridesA, stridesB;
  eImageBufferType typeA, typeB;
  eOverlap expected;
};
class Overlap : public testing::TestWithParam<OverlapCase> {};
constexpr auto u8 = eImageBufferType::UInt8, i8 = eImageBufferType::Int8, u16 = eImageBufferType::UInt16;
INSTANTIATE_TEST_SUITE_P(
    Cases, Overlap,
    testing::Values(
        OverlapCase{"Same", 0, 0, {8, 4}, {8, 4}, {10}, {10}, u8, u8, eOverlap::Same},
        OverlapCase{"SameSizeOfSample", 0, 0, {8, 4}, {8, 4}, {10}, {10}, u8, i8, eOverlap::Same},
        OverlapCase{"OtherSizeOfSample", 0, 0, {8, 4}, {8, 4}, {16}, {16}, u8, u16, eOverlap::Partial},
        OverlapCase{"SameBytesAsOtherSamples", 0, 0, {8, 4}, {4, 4}, {8}, {8}, u8, u16, eOverlap::Partial},
        OverlapCase{"OtherStrides", 0, 0, {8, 4}, {8, 4}, {10}, {12}, u8, u8, eOverlap::Partial},
        OverlapCase{"OtherSizes", 0, 0, {8, 4}, {8, 3}, {10}, {10}, u8, u8, eOverlap::Partial},
        OverlapCase{"StrideOfASingleRow", 0, 0, {8, 1}, {8, 1}, {10}, {99}, u8, u8, eOverlap::Same},
        OverlapCase{"OneRowShared", 0, 30, {8, 4}, {8, 4}, {10}, {10}, u8, u8, eOverlap::Partial},
        OverlapCase{"OneColumnShared", 0, 7, {8, 4}, {8, 4}, {20}, {20}, u8, u8, eOverlap::Partial},
        OverlapCase{"SideBySide", 0, 8, {8, 4}, {8, 4}, {16}, {16}, u8, u8, eOverlap::None},
        OverlapCase{"SideBySideShifted", 0, 40, {8, 4}, {8, 2}, {16}, {16}, u8, u8, eOverlap::None},
        OverlapCase{
            "SideBySideSecondLower", 0, 8 + 3 * 24, {8, 9}, {16, 2}, {24}, {24}, u8, u8, eOverlap::None},
        OverlapCase{
            "SideBySideVolumes", 0, 8, {8, 3, 2}, {4, 3, 2}, {12, 48}, {12, 48}, u8, u8, eOverlap::None},
        OverlapCase{"WrapsAroundTheGrid", 0, 28, {8, 6}, {8, 2}, {16}, {16}, u8, u8, eOverlap::Partial},
        OverlapCase{"InterleavedRows", 0, 8, {8, 4}, {8, 4}, {16}, {16}, u8, u16, eOverlap::Partial},
        OverlapCase{"InterleavedRowsSameType", 8, 0, {8, 4}, {8, 4}, {16}, {16}, u8, u8, eOverlap::None},
        OverlapCase{
            "InterleavedSlices", 0, 24, {8, 3, 2}, {8, 3, 2}, {8, 48}, {8, 48}, u8, u8, eOverlap::None},
        OverlapCase{"SideBySideOneTurned", 0, 8 + 48, {8, 4}, {8, 4}, {16}, {-16}, u8, u8, eOverlap::None},
        OverlapCase{"Adjacent", 0, 40, {8, 5}, {8, 5}, {8}, {8}, u8, u8, eOverlap::None},
        OverlapCase{"Disjoint", 0, 128, {8, 5}, {8, 5}, {8}, {9}, u8, u16, eOverlap::None}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_P(Overlap, IsToldBothWays) {
  alignas(64) static char memory[1024];
  const OverlapCase& p = GetParam();
  const auto a = Image::wrapConst(memory + p.first, p.sizeA, p.typeA, p.stridesA);
  ImageStrides stridesB = p.stridesB;
  if (p.typeB == u16 && stridesB.y % 2) ++stridesB.y;
  const auto b = Image::wrapConst(memory + p.second, p.sizeB, p.typeB, stridesB);
  EXPECT_EQ(getOverlap(*a, *b), p.expected);
  EXPECT_EQ(getOverlap(*b, *a), p.expected);
}

TEST(OverlapOfAnyTwo, IsNeverMissed) {
  static char memory[4096];
  std::mt19937 random(5);
  const auto upTo = [&](std::size_t most) { return random() % most + 1; };
  int shared = 0, apart = 0;
  for (int i = 0; i < 4000; ++i) {
    const auto make = [&](std::ptrdiff_t pitch) {
      const ImageGeometry g{upTo(9), upTo(4), upTo(3)};
      const std::ptrdiff_t y = random() % 4 ? pitch : static_cast<std::ptrdiff_t>(random() % 60) - 30;
      const std::ptrdiff_t z = static_cast<std::ptrdiff_t>(random() % 13 - 6) * (random() % 2 ? pitch : 7);
      return Image::wrapConst(memory + 2048 + random() % 64, g, u8, {random() % 5 ? y : -y, z});
    };
    const std::ptrdiff_t pitch = static_cast<std::ptrdiff_t>(upTo(20));
    const auto a = make(pitch), b = make(pitch);
    const auto bytesA = bytesOf(*a), bytesB = bytesOf(*b);
    const bool common =
        std::any_of(bytesA.begin(), bytesA.end(), [&](const char* p) { return bytesB.count(p) != 0; });
    (common ? shared : apart)++;
    if (common) {
      ASSERT_NE(getOverlap(*a, *b), eOverlap::None) << "attempt " << i;
    }
  }
  EXPECT_GT(shared, 300);
  EXPECT_GT(apart, 300);
}

TEST(CopySamples, WantsEqualSizesAndTypes) {
  const auto image = makeRandom({5, 4, 2, 3, 2}, u16, 3, 60000);
  std::vector<std::uint16_t> memory(2000, 77);
  const auto padded = Image::wrap(memory.data(), image->getGeometry(), u16, {14, 70, 150, 480});
  copySamples(*image, *padded);
  EXPECT_TRUE(sameSamples(*image, *padded));
  EXPECT_EQ(std::count(memory.begin(), memory.end(), 77) + 240,
            2000 + std::count(image->getRow<std::uint16_t>(0), image->getRow<std::uint16_t>(0) + 240, 77));
  EXPECT_TRUE(has(
      messageOf([&] { copySamples(*image, *Image::create(image->getGeometry(), eImageBufferType::Int16)); }),
      "int16"));
  EXPECT_TRUE(has(messageOf([&] {
                    copySamples(*image, *Image::create({5, 4, 2, 2, 3}, u16));
                  }),
                  "2 (c) x 3 (t)"));
}

TEST(HostImage, NullIsRefusedByName) {
  EXPECT_TRUE(
      has(messageOf([] { hostImage(boost::shared_ptr<const BaseImage>(), "the mask"); }), "the mask"));
}

TEST(RecycledMemory, ServesImagesOfTheSameSizeAndGivesBackTheRest) {
  const std::size_t limit = getRecycledMemoryLimit();
  if (limit == 0) GTEST_SKIP() << "built to let a sanitizer see every block";
  setRecycledMemoryLimit(0);
  setRecycledMemoryLimit(limit);
  ASSERT_EQ(getRecycledMemory(), 0u);
  const ImageGeometry g{2000, 1500};
  const void* first;
  boost::shared_ptr<BaseImage> part;
  {
    const auto image = Image::create(g, u8);
    first = image->getData();
    part = image->getSubImage(0, 1, 0, 0);
  }
  EXPECT_EQ(getRecycledMemory(), 0u) << "the part still shows the samples";
  part.reset();
  EXPECT_GE(getRecycledMemory(), 3000000u);
  auto again = Image::create(g, u8);
  EXPECT_EQ(again->getData(), first);
  EXPECT_EQ(getRecycledMemory(), 0u);
  setRecycledMemoryLimit(1000);
  again.reset();
  EXPECT_EQ(getRecycledMemory(), 0u);
  setRecycledMemoryLimit(limit);
}

TEST(BorderText, ReadsBackEqual) {
  for (const double value : {0.0, -1.0, 0.1, 1e300, -3.25e-7, std::nan(""), double(INFINITY)})
    for (const eBorder border : {eBorder::Mirror, eBorder::Replicate, eBorder::Circular, eBorder::Constant}) {
      const BorderPolicy policy(border, value);
      BorderPolicy read(border == eBorder::Mirror ? eBorder::Circular : eBorder::Mirror);
      ASSERT_TRUE(BorderPolicy::fromText(policy.toText(), read)) << policy.toText();
      EXPECT_TRUE(read == policy) << policy.toText();
    }
  EXPECT_EQ(mirorBorder2d()->toText(), "mirror");
  EXPECT_EQ(replicateBorder3d()->toText(), "replicate");
  EXPECT_EQ(circularBorder2d()->toText(), "circular");
  EXPECT_EQ(constantBorder3d(-2.5)->toText(), "constant=-2.5");
  EXPECT_FALSE(BorderPolicy(eBorder::Constant, 1) == BorderPolicy(eBorder::Constant, 2));
  EXPECT_FALSE(BorderPolicy(eBorder::Constant, 0) == BorderPolicy(eBorder::Mirror, 0));
}

TEST(BorderText, RefusedTextLeavesThePolicy) {
  for (const char* text : {"", "Mirror", "mirror ", "constant", "constant=", "constant=1x", "constant = 1",
                           "constant=1,2", "reflect"}) {
    BorderPolicy policy(eBorder::Constant, 5);
    const BoolResult result = BorderPolicy::fromText(text, policy);
    EXPECT_FALSE(result) << text;
    EXPECT_FALSE(result.getMessage().empty()) << text;
    EXPECT_TRUE(policy == BorderPolicy(eBorder::Constant, 5)) << text;
  }
}

TEST(Gpu, WithoutADeviceImagesOnItCannotBeMade) {
  const bool device = core::isGpuSupportActivated();
  const auto why = [] { return messageOf([] { CudaImage::create({4, 3}, u8); }); };
  if (!device) {
    const std::string message = why();
    EXPECT_TRUE(has(message, "no GPU answers") || has(message, "without a CUDA toolkit")) << message;
    core::activateGpuSupport(true);
    EXPECT_FALSE(core::isGpuSupportActivated()) << "wishing brings no device";
    EXPECT_TRUE(has(messageOf([] { CudaImage::fromHost(*Image::create({4, 3}, u8)); }), "GPU"));
  } else {
    core::activateGpuSupport(false);
    EXPECT_FALSE(core::isGpuSupportActivated());
    EXPECT_TRUE(has(why(), "switched off"));
    core::activateGpuSupport(true);
    const auto image = makeRandom({7, 5, 3, 2, 2}, u16, 9, 60000);
    EXPECT_TRUE(sameSamples(*CudaImage::fromHost(*image)->toHost(), *image));
  }
}

}  // namespace
