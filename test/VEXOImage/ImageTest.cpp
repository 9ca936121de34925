#include "VEXOImage/Image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "VEXOCore/Gpu.h"
#include "VEXOImage/CudaImage.h"
#include "tools/ImageChecks.h"

namespace {

using namespace vexo;
using namespace vexo::image;
using namespace vexo::test;

constexpr auto u8 = eImageBufferType::UInt8, i8 = eImageBufferType::Int8, u16 = eImageBufferType::UInt16;
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
  eImageBufferType read = type() == u8 ? i8 : u8;
  ASSERT_TRUE(fromString(toString(type()), read));
  EXPECT_EQ(read, type());
  for (const char* name : {"", "UINT8", "uint8 ", "float64"})
    EXPECT_TRUE(
        has(fromString(name, read).getMessage(), "uint8, int8, uint16, int16, uint32, int32, float32"));
  EXPECT_EQ(read, type());
  visitBufferType(type(), [&](auto zero) {
    using T = decltype(zero);
    EXPECT_EQ(sizeof(T), getSampleSize(type()));
    EXPECT_EQ(bufferTypeOf<T>(), type());
    const char* const kind = std::is_same_v<T, float> ? "float" : std::is_signed_v<T> ? "int" : "uint";
    EXPECT_EQ(toString(type()), kind + std::to_string(8 * sizeof(T)));
  });
}

TEST_P(SampleType, RefusesSizesThatDoNotFit) {
  for (const ImageGeometry& g : {ImageGeometry{0, 3}, ImageGeometry{3, 0}, ImageGeometry{3, 4, 0},
                                 ImageGeometry{3, 4, 5, 0}, ImageGeometry{3, 4, 5, 6, 0}})
    expectFailure({toString(g)}, [&] { Image::create(g, type()); });
  // The products wrap around to something small or negative.
  for (const ImageGeometry& g : {ImageGeometry{huge, 1}, ImageGeometry{huge / 2 + 1, 2},
                                 ImageGeometry{std::size_t(1) << 32, 1, 1, 1, std::size_t(1) << 32},
                                 ImageGeometry{1, huge / 2 + 2}, ImageGeometry{3, 7, huge / 3}}) {
    expectFailure({toString(g)}, [&] { Image::create(g, type()); });
    expectFailure({toString(g)}, [&] { CudaImage::create(g, type()); });
    double sample = 0;
    expectFailure({toString(g)}, [&] { Image::wrapConst(&sample, g, type(), {}); });
  }
}

TEST_P(SampleType, EverySampleHasItsOwnPlace) {
  const auto image = Image::create({3, 4, 5, 2, 3}, type());
  const auto* next = static_cast<const char*>(image->getData());
  forEachSample(image->getGeometry(), [&](auto x, auto... at) {
    ASSERT_EQ(static_cast<const char*>(image->getRow(at...)) + static_cast<std::ptrdiff_t>(x) * size(), next);
    next += size();
  });
}

TEST_P(SampleType, WrapChecksAddressAndStrides) {
  std::vector<double> memory(200);
  auto* const data = reinterpret_cast<char*>(memory.data()) + 400;
  const ImageGeometry g{5, 4}, stack{5, 4, 3};
  const auto wrap = [&](const ImageGeometry& geometry, std::ptrdiff_t y, std::ptrdiff_t z = 0) {
    return [=] { Image::wrap(data, geometry, type(), {y * size(), z * size()}); };
  };
  expectFailure({"null"}, [&] { Image::wrap(nullptr, g, type(), {5 * size()}); });
  expectFailure({"null"}, [&] { Image::wrapConst(nullptr, g, type(), {5 * size()}); });
  if (size() > 1) {
    expectFailure({"aligned"}, [&] { Image::wrap(data + 1, g, type(), {5 * size()}); });
    for (const std::ptrdiff_t stride : {6 * size() + 1, -6 * size() - 1}) {
      expectFailure({std::to_string(stride)}, [&] { Image::wrap(data, g, type(), {stride}); });
      expectFailure({std::to_string(stride)}, [&] { Image::wrapConst(data, g, type(), {stride}); });
    }
  }
  for (const std::ptrdiff_t samples : {0, 1, 4, -4}) {
    expectFailure({"overlap"}, wrap(g, samples));
    EXPECT_EQ(Image::wrapConst(data, g, type(), {samples * size()})->getStrides().y, samples * size());
  }
  // Slices that begin inside the rows of the slice before; the shorter stride need not be that of y.
  expectFailure({"overlap"}, wrap(stack, 5, 19));
  EXPECT_NO_THROW(wrap(stack, 15, 5)());
  expectFailure({"overlap"}, wrap(stack, 14, 5));
  // Strides of axes with one position mean nothing.
  EXPECT_NO_THROW(Image::wrap(data, {5, 1, 3}, type(), {1, 5 * size(), -3, 7}));
  expectFailure({"address space"},
                [&] { Image::wrap(data, g, type(), {std::numeric_limits<std::ptrdiff_t>::min()}); });
}

TEST_P(SampleType, NegativeStridesTurnAnImageOver) {
  const auto image = rangeImage({6, 5, 3}, type(), 0, 9, 7);
  const ImageStrides s = image->getStrides();
  const auto turned = Image::wrap(image->getRow(4, 2), image->getGeometry(), type(), {-s.y, -s.z});
  forEachSample(image->getGeometry(),
                [&](std::size_t x, std::size_t y, std::size_t z, std::size_t, std::size_t) {
                  ASSERT_EQ(getSample(*turned, x, y, z), getSample(*image, x, 4 - y, 2 - z));
                });
  const auto copy = Image::create(image->getGeometry(), type());
  copySamples(*turned, *copy);
  EXPECT_TRUE(sameBits(*turned, *copy));
  EXPECT_EQ(getOverlap(*image, *turned), eOverlap::Partial);
}

TEST(SubImage, SharesTheSamplesAndKeepsThemAlive) {
  const ImageGeometry g{4, 3, 5, 2, 3};
  const auto image = rangeImage(g, eImageBufferType::Int16, 0, 9, 1);
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
  // Memory of this size that is free is given to the next image.
  auto large = Image::create({2048, 1024}, u8);
  const auto shown = large->getSubImage(0, 1, 0, 0);
  large.reset();
  const auto next = Image::create({2048, 1024}, u8);
  EXPECT_NE(next->getData(), hostImage(shown, "shown").getData());
  setSample(hostImage(shown, "shown"), 1, 0, 0);
}

TEST(SubImage, RangesOutsideAreRefused) {
  const auto image = Image::create({4, 3, 5, 2, 3}, eImageBufferType::UInt8);
  const std::size_t ranges[][4] = {{0, 0, 0, 0},    {0, 6, 0, 0},    {5, 1, 0, 0}, {4, 2, 0, 0},
                                   {4, huge, 0, 0}, {huge, 2, 0, 0}, {0, 5, 2, 0}, {0, 5, 0, 3}};
  for (const auto& [z, n, c, t] : ranges)
    expectFailure({"4 x 3 x 5"}, [&, z = z, n = n, c = c, t = t] { image->getSubImage(z, n, c, t); });
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

TEST(Overlap, IsToldBothWays) {
  alignas(64) static char memory[1024];
  const struct {
    const char* name;
    std::size_t second;  // where the other image begins
    ImageGeometry sizeA, sizeB;
    ImageStrides stridesA, stridesB;
    eImageBufferType typeB;
    eOverlap expected;
  } cases[] = {{"samples of one size", 0, {8, 4}, {8, 4}, {10}, {10}, i8, eOverlap::Same},
               {"stride of a single row", 0, {8, 1}, {8, 1}, {10}, {99}, u8, eOverlap::Same},
               {"samples of two sizes", 0, {8, 4}, {8, 4}, {16}, {16}, u16, eOverlap::Partial},
               {"same bytes, other samples", 0, {8, 4}, {4, 4}, {8}, {8}, u16, eOverlap::Partial},
               {"interleaved with wider samples", 8, {8, 4}, {8, 4}, {16}, {16}, u16, eOverlap::Partial},
               {"side by side", 8, {8, 4}, {8, 4}, {16}, {16}, u8, eOverlap::None},
               {"side by side, shifted", 40, {8, 4}, {8, 2}, {16}, {16}, u8, eOverlap::None},
               {"side by side, lower", 8 + 3 * 24, {8, 9}, {16, 2}, {24}, {24}, u8, eOverlap::None},
               {"side by side volumes", 8, {8, 3, 2}, {4, 3, 2}, {12, 48}, {12, 48}, u8, eOverlap::None},
               {"interleaved slices", 24, {8, 3, 2}, {8, 3, 2}, {8, 48}, {8, 48}, u8, eOverlap::None},
               {"side by side, one turned", 8 + 48, {8, 4}, {8, 4}, {16}, {-16}, u8, eOverlap::None},
               {"adjacent", 40, {8, 5}, {8, 5}, {8}, {8}, u8, eOverlap::None},
               {"disjoint", 128, {8, 5}, {8, 5}, {8}, {10}, u16, eOverlap::None}};
  for (const auto& c : cases) {
    const auto a = Image::wrapConst(memory, c.sizeA, u8, c.stridesA);
    const auto b = Image::wrapConst(memory + c.second, c.sizeB, c.typeB, c.stridesB);
    EXPECT_EQ(getOverlap(*a, *b), c.expected) << c.name;
    EXPECT_EQ(getOverlap(*b, *a), c.expected) << c.name;
  }
}

TEST(Overlap, OfAnyTwoIsNeverMissed) {
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
    const ImageStrides s = a->getStrides(), r = b->getStrides();
    const ImageGeometry& g = a->getGeometry();
    const bool same = a->getRow(0) == b->getRow(0) && g == b->getGeometry() && (g.y == 1 || s.y == r.y) &&
                      (g.z == 1 || s.z == r.z);
    if (common) {
      ASSERT_EQ(getOverlap(*a, *b), same ? eOverlap::Same : eOverlap::Partial) << "attempt " << i;
    }
  }
  EXPECT_GT(shared, 300);
  EXPECT_GT(apart, 300);
}

TEST(CopySamples, WritesTheSamplesOnlyAndWantsEqualSizesAndTypes) {
  const auto image = rangeImage({5, 4, 2, 3, 2}, u16, 0, 60000, 3);
  std::vector<std::uint16_t> memory(2000, 77);
  const auto padded = Image::wrap(memory.data(), image->getGeometry(), u16, {14, 70, 150, 480});
  copySamples(*image, *padded);
  EXPECT_TRUE(sameBits(*image, *padded));
  EXPECT_EQ(std::count(memory.begin(), memory.end(), 77) + 240,
            2000 + std::count(image->getRow<std::uint16_t>(0), image->getRow<std::uint16_t>(0) + 240, 77));
  expectFailure({"int16"},
                [&] { copySamples(*image, *Image::create(image->getGeometry(), eImageBufferType::Int16)); });
  expectFailure({"2 (c) x 3 (t)"}, [&] { copySamples(*image, *Image::create({5, 4, 2, 2, 3}, u16)); });
}

TEST(BorderText, ReadsBackEqualOrLeavesThePolicy) {
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
  const BorderPolicy five(eBorder::Constant, 5);
  EXPECT_FALSE(five == BorderPolicy(eBorder::Constant, 2) || five == BorderPolicy(eBorder::Mirror, 5));
  for (const char* text : {"", "Mirror", "mirror ", "constant", "constant=", "constant=1x", "constant = 1",
                           "constant=1,2", "reflect"}) {
    BorderPolicy policy = five;
    EXPECT_NE(BorderPolicy::fromText(text, policy).getMessage(), "") << text;
    EXPECT_TRUE(policy == five) << text;
  }
}

TEST(Gpu, WithoutADeviceImagesOnItCannotBeMade) {
  const bool device = core::isGpuSupportActivated();
  const auto create = [] { CudaImage::create({4, 3}, u8); };
  if (!device) {
    const std::string message = failureOf(create);
    EXPECT_TRUE(has(message, "no GPU answers") || has(message, "without a CUDA toolkit"));
    core::activateGpuSupport(true);
    EXPECT_FALSE(core::isGpuSupportActivated()) << "wishing brings no device";
    expectFailure({"GPU"}, [] { CudaImage::fromHost(*Image::create({4, 3}, u8)); });
  } else {
    core::activateGpuSupport(false);
    EXPECT_FALSE(core::isGpuSupportActivated());
    expectFailure({"switched off"}, create);
    core::activateGpuSupport(true);
    const auto image = rangeImage({7, 5, 3, 2, 2}, u16, 0, 60000, 9);
    EXPECT_TRUE(sameBits(*CudaImage::fromHost(*image)->toHost(), *image));
  }
}

}  // namespace
