// The medians that compare values: of 3 x 3, 5 x 5 and any number of samples.
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/MedianReference.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl1.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;
using InPtr = boost::shared_ptr<const image::BaseImage>;
using OutPtr = boost::shared_ptr<image::BaseImage>;

/// One median with its half sizes, in its four forms.
struct Median {
  const char* name;
  int hx, hy, hz;
  std::function<OutPtr(InPtr)> create;
  std::function<void(InPtr, OutPtr)> fill;
  std::function<OutPtr(InPtr)> createAsync;
  std::function<OutPtr(InPtr, OutPtr)> fillAsync;

  std::string label() const {
    return std::string(name) + "_" + std::to_string(hx) + std::to_string(hy) + std::to_string(hz);
  }
  std::string kernelClass() const { return std::string("vexo::imaproc::filter::") + name + "ImgLvl3"; }
};

Median generic2d(std::uint32_t hx, std::uint32_t hy) {
  return {
      "GenericMedian2d",
      static_cast<int>(hx),
      static_cast<int>(hy),
      0,
      [=](auto in) { return genericMedian2dImg(in, hx, hy); },
      [=](auto in, auto out) { genericMedian2dImg(in, hx, hy, out); },
      [=](auto in) { return getAsyncProcessorOutput(genericMedian2dImg_async(in, hx, hy)); },
      [=](auto in, auto out) { return getAsyncProcessorOutput(genericMedian2dImg_async(in, hx, hy, out)); }};
}
Median generic3d(std::uint32_t hx, std::uint32_t hy, std::uint32_t hz) {
  return {"GenericMedian3d",
          static_cast<int>(hx),
          static_cast<int>(hy),
          static_cast<int>(hz),
          [=](auto in) { return genericMedian3dImg(in, hx, hy, hz); },
          [=](auto in, auto out) { genericMedian3dImg(in, hx, hy, hz, out); },
          [=](auto in) { return getAsyncProcessorOutput(genericMedian3dImg_async(in, hx, hy, hz)); },
          [=](auto in, auto out) {
            return getAsyncProcessorOutput(genericMedian3dImg_async(in, hx, hy, hz, out));
          }};
}

const std::vector<Median> medians = {
    {"K33Median2d", 1, 1, 0, [](auto in) { return k33Median2dImg(in); },
     [](auto in, auto out) { k33Median2dImg(in, out); },
     [](auto in) { return getAsyncProcessorOutput(k33Median2dImg_async(in)); },
     [](auto in, auto out) { return getAsyncProcessorOutput(k33Median2dImg_async(in, out)); }},
    {"K55Median2d", 2, 2, 0, [](auto in) { return k55Median2dImg(in); },
     [](auto in, auto out) { k55Median2dImg(in, out); },
     [](auto in) { return getAsyncProcessorOutput(k55Median2dImg_async(in)); },
     [](auto in, auto out) { return getAsyncProcessorOutput(k55Median2dImg_async(in, out)); }},
    generic2d(3, 0),
    generic2d(0, 0),
    generic2d(2, 4),
    generic2d(9, 6),  // more samples than 8 bits count
    generic3d(1, 1, 1),
    generic3d(2, 0, 1),
    generic3d(0, 2, 2),
    generic3d(0, 3, 0),
};

void expectMedian(const Image& in, const Image& out, const Median& m) {
  int failures = 0;
  forEachSample(in.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    const double expected =
        converted(middleOf(windowOf(in, m.hx, m.hy, m.hz, x, y, z, c, t)), out.getBufferType());
    if (getSample(out, x, y, z, c, t) != expected && failures++ < 3)
      ADD_FAILURE() << m.name << " x " << x << " y " << y << " z " << z << ": "
                    << getSample(out, x, y, z, c, t) << " instead of " << expected;
  });
}

ImagePtr run(const Median& m, const ImagePtr& in, eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  m.fill(in, out);
  return out;
}

class Medians : public ::testing::TestWithParam<std::tuple<std::size_t, eImageBufferType>> {
protected:
  const Median& median() const { return medians[std::get<0>(GetParam())]; }
  eImageBufferType type() const { return std::get<1>(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(All, Medians,
                         ::testing::Combine(::testing::Range(std::size_t{0}, medians.size()),
                                            ::testing::ValuesIn(allTypes())),
                         [](const auto& info) {
                           return medians[std::get<0>(info.param)].label() + "_" +
                                  image::toString(std::get<1>(info.param));
                         });

TEST_P(Medians, EveryOutputTypeAndInstructionSetAgreesWithSorting) {
  const ImagePtr in = wideImage({75, 21, 2, 2, 1}, type());
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(median().kernelClass(), sets);
    for (const auto out : allTypes()) {
      SCOPED_TRACE(core::toString(sets.getSets()) + " " + image::toString(out));
      expectMedian(*in, *run(median(), in, out), median());
    }
  }
}

// Each window size against each row and column of a narrow image, in memory with gaps.
TEST_P(Medians, NarrowAndTinyImages) {
  std::vector<ImageGeometry> shapes = {{1, 1}, {1, 7}, {40, 1}, {2, 3, 2}, {2100, 3}};
  const std::size_t step = median().hx > 2 ? 7 : 1;
  for (std::size_t width = 1; width <= 70; width += step) shapes.push_back({width, 3 + width % 4});
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(median().kernelClass(), sets);
    for (const ImageGeometry& shape : shapes) {
      SCOPED_TRACE(core::toString(sets.getSets()) + " " + std::to_string(shape.x));
      const ImagePtr in = withGaps(*wideImage(shape, type(), 3), shape.x % 4);
      const ImagePtr out = withGaps(*in, 1);
      median().fill(in, out);
      expectMedian(*in, *out, median());
    }
  }
}

TEST_P(Medians, BitsDoNotDependOnThreadsOrPlace) {
  const ImagePtr in = wideImage({133, 333, 2}, type());
  const ImagePtr expected = run(median(), in, type());
  expectMedian(*in, *expected, median());
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(median().kernelClass(), sets);
    for (const std::size_t threads : {1u, 3u, 7u}) {
      core::ActionRunner::getInstance().setThreadCount(threads);
      const ImagePtr same = copyOf(*in);
      median().fill(same, same);
      EXPECT_TRUE(sameBits(*same, *expected)) << "in place, " << threads << " threads";
      EXPECT_TRUE(sameBits(*run(median(), in, type()), *expected)) << threads << " threads";
    }
    core::ActionRunner::getInstance().setThreadCount(0);
  }
}

TEST_P(Medians, FourCallFormsGiveTheSameImage) {
  const ImagePtr in = wideImage({90, 70, 3}, type());
  const ImagePtr expected = run(median(), in, type());
  EXPECT_TRUE(sameBits(image::hostImage(median().create(in), "created"), *expected));
  EXPECT_TRUE(sameBits(image::hostImage(median().createAsync(in), "async"), *expected));
  const ImagePtr out = Image::create(in->getGeometry(), type());
  EXPECT_EQ(median().fillAsync(in, out), out);
  EXPECT_TRUE(sameBits(*out, *expected));
}

class MedianKinds : public ::testing::TestWithParam<std::size_t> {
protected:
  const Median& median() const { return medians[GetParam()]; }
};
INSTANTIATE_TEST_SUITE_P(All, MedianKinds, ::testing::Range(std::size_t{0}, medians.size()),
                         [](const auto& info) { return medians[info.param].label(); });

TEST_P(MedianKinds, NanGivesSomeSampleOfTheWindowAndSpoilsNoOther) {
  const ImagePtr in = wideImage({80, 40}, eImageBufferType::Real32);
  std::mt19937 random(5);
  forEachSample(in->getGeometry(), [&](auto... at) {
    if (random() % 40 == 0) setSample(*in, random() % 2 ? NAN : -NAN, at...);
  });
  const auto sameOrNan = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
  const ImagePtr expected = run(median(), in, eImageBufferType::Real32);
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(median().kernelClass(), sets);
    const ImagePtr out = run(median(), in, eImageBufferType::Real32);
    EXPECT_TRUE(sameBits(*out, *expected)) << core::toString(sets.getSets());
    forEachSample(in->getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
      std::vector<double> window = windowOf(*in, median().hx, median().hy, median().hz, x, y, z, c, t);
      const double result = getSample(*out, x, y);
      EXPECT_TRUE(std::any_of(window.begin(), window.end(), [&](double v) { return sameOrNan(v, result); }));
      if (std::any_of(window.begin(), window.end(), [](double v) { return std::isnan(v); })) return;
      std::sort(window.begin(), window.end());
      EXPECT_EQ(result, window[window.size() / 2]) << x << " " << y;
    });
  }
}

TEST_P(MedianKinds, BadCallsNameWhatIsWrongAndTouchNothing) {
  const ImagePtr in = wideImage({20, 10}, eImageBufferType::UInt8);
  const ImagePtr tall = wideImage({20, 11}, eImageBufferType::UInt8, 2), before = copyOf(*tall);
  const auto part = [&](std::size_t y) {
    return Image::wrap(tall->getRow(y), {20, 10}, eImageBufferType::UInt8, tall->getStrides(), tall);
  };
  const std::vector<std::pair<std::function<void()>, const char*>> calls = {
      {[&] { median().create(nullptr); }, "InImg"},
      {[&] { median().fill(in, nullptr); }, "OutImg"},
      {[&] { median().fill(in, tall); }, "20 x 11"},
      {[&] { median().fillAsync(in, tall); }, "20 x 11"},
      {[&] { median().fill(part(0), part(1)); }, "overlap"}};
  for (const auto& [call, words] : calls) {
    try {
      call();
      ADD_FAILURE() << words << ": nothing was thrown";
    } catch (const BaseException& failure) {
      EXPECT_NE(failure.getMessage().find(words), std::string::npos) << failure.what();
    }
  }
  EXPECT_TRUE(sameBits(*tall, *before));
}

// More samples than 16 bits count, and many periods of the mirrored image.
TEST(GenericMedian, WindowsFarLargerThanTheImage) {
  const Median large = generic2d(150, 120);
  for (const auto type : allTypes())
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(large.kernelClass(), sets);
      const ImagePtr in = wideImage({4, 3}, type);
      expectMedian(*in, *run(large, in, type), large);
    }
}

TEST(GenericMedian, RefusesWindowsThatAreTooLarge) {
  const ImagePtr in = wideImage({4, 3}, eImageBufferType::Int16);
  const auto expectRefused = [&](const Median& m, const char* words) {
    try {
      m.create(in);
      ADD_FAILURE() << words << ": nothing was thrown";
    } catch (const BaseException& failure) {
      EXPECT_NE(failure.getMessage().find(words), std::string::npos) << failure.what();
    }
  };
  expectRefused(generic3d(2000, 2000, 2000), "more than 4294967295 samples");
  expectRefused(generic2d(1, 32768), "InHalfKnlSizeY: the value is refused: 32768");
}

}  // namespace
}  // namespace vexo::imaproc::filter
