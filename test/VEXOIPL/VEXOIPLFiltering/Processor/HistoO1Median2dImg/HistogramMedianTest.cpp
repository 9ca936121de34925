// The medians that count in histograms: of 2d images in constant time, cut along Y and along X, swept, and
// 3d.
#include <functional>

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistoO1Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/HistoOkMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/MedianReference.h"
#include "tools/Calls.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;
using InPtr = boost::shared_ptr<const image::BaseImage>;
using OutPtr = boost::shared_ptr<image::BaseImage>;
using RangePtr = boost::shared_ptr<const attr::Range>;

struct Half {
  int x, y, z;
};
RangePtr makeRange(double minimum, double maximum) {
  return boost::make_shared<attr::Range>(minimum, maximum);
}

/// One of the medians, in its four forms.
struct Family {
  const char* name;
  bool volumes;
  std::function<OutPtr(InPtr, Half, RangePtr)> create;
  std::function<void(InPtr, Half, RangePtr, OutPtr)> fill;
  std::function<OutPtr(InPtr, Half, RangePtr)> createAsync;
  std::function<OutPtr(InPtr, Half, RangePtr, OutPtr)> fillAsync;

  std::string kernelClass() const { return std::string("vexo::imaproc::filter::") + name + "Lvl3"; }
};

std::uint32_t positive(int half) {
  return static_cast<std::uint32_t>(half);
}
template <class Run, class Start>
Family planar(const char* name, Run run, Start start) {
  return {name,
          false,
          [=](auto in, Half h, auto range) { return run(in, positive(h.x), positive(h.y), range); },
          [=](auto in, Half h, auto range, auto out) { run(in, positive(h.x), positive(h.y), range, out); },
          [=](auto in, Half h, auto range) {
            return getAsyncProcessorOutput(start(in, positive(h.x), positive(h.y), range));
          },
          [=](auto in, Half h, auto range, auto out) {
            return getAsyncProcessorOutput(start(in, positive(h.x), positive(h.y), range, out));
          }};
}

const std::vector<Family> families = {
    planar(
        "HistoO1Median2dImg", [](auto... a) { return histoO1Median2dImg(a...); },
        [](auto... a) { return histoO1Median2dImg_async(a...); }),
    planar(
        "HistoO1MedianXStrip2dImg", [](auto... a) { return histoO1MedianXStrip2dImg(a...); },
        [](auto... a) { return histoO1MedianXStrip2dImg_async(a...); }),
    planar(
        "HistoOkMedian2dImg", [](auto... a) { return histoOkMedian2dImg(a...); },
        [](auto... a) { return histoOkMedian2dImg_async(a...); }),
    {"HistoMedian3dImg", true,
     [](auto in, Half h, auto range) {
       return histoMedian3dImg(in, positive(h.x), positive(h.y), positive(h.z), range);
     },
     [](auto in, Half h, auto range, auto out) {
       histoMedian3dImg(in, positive(h.x), positive(h.y), positive(h.z), range, out);
     },
     [](auto in, Half h, auto range) {
       return getAsyncProcessorOutput(
           histoMedian3dImg_async(in, positive(h.x), positive(h.y), positive(h.z), range));
     },
     [](auto in, Half h, auto range, auto out) {
       return getAsyncProcessorOutput(
           histoMedian3dImg_async(in, positive(h.x), positive(h.y), positive(h.z), range, out));
     }}};

/// The level of a sample, and the sample of a level, as the manual states them.
struct Levels {
  bool exact;
  double minimum, maximum;

  Levels(const attr::Range& range, eImageBufferType type)
      : exact(false), minimum(range.minimum.getValue()), maximum(range.maximum.getValue()) {
    if (type == eImageBufferType::Real32) return;
    minimum = std::trunc(minimum);
    maximum = std::trunc(maximum);
    exact = maximum - minimum <= 255;
  }
  double of(double sample) const {
    if (std::isnan(sample)) return 0;
    const double level =
        exact ? sample - minimum : std::trunc((sample - minimum) * (256.0 / (maximum - minimum + 1.0)));
    return std::clamp(level, 0.0, 255.0);
  }
  double sampleOf(double level, bool whole) const {
    const double sample = minimum + level * (exact ? 1.0 : (maximum - minimum + 1.0) * 0.00390625);
    return whole ? std::trunc(sample) : static_cast<double>(static_cast<float>(sample));
  }
};

ImagePtr reference(const Image& in, Half h, const RangePtr& range, eImageBufferType type) {
  const Levels levels(*range, in.getBufferType());
  const bool whole = in.getBufferType() != eImageBufferType::Real32;
  const ImagePtr out = Image::create(in.getGeometry(), type);
  forEachSample(in.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    std::vector<double> window = windowOf(in, h.x, h.y, h.z, x, y, z, c, t);
    for (double& sample : window) sample = levels.of(sample);
    setSample(*out, converted(levels.sampleOf(middleOf(window), whole), type), x, y, z, c, t);
  });
  return out;
}

/// Random whole samples of a range.
ImagePtr rangeImage(const ImageGeometry& geometry, eImageBufferType type, double low, double high) {
  const ImagePtr result = Image::create(geometry, type);
  std::mt19937 random(7);
  std::uniform_real_distribution<double> value(low, high + 1);
  forEachSample(geometry, [&](auto... at) { setSample(*result, std::floor(value(random)), at...); });
  return result;
}

class HistogramMedians : public ::testing::TestWithParam<std::tuple<std::size_t, eImageBufferType>> {
protected:
  const Family& family() const { return families[std::get<0>(GetParam())]; }
  eImageBufferType type() const { return std::get<1>(GetParam()); }
  bool isReal() const { return type() == eImageBufferType::Real32; }
  double lowest() const {
    return image::visitBufferType(type(), [](auto zero) {
      return std::max(-1e6, double(std::numeric_limits<decltype(zero)>::lowest()));
    });
  }
  double highest() const {
    return image::visitBufferType(
        type(), [](auto zero) { return std::min(1e6, double(std::numeric_limits<decltype(zero)>::max())); });
  }
  ImagePtr run(const ImagePtr& in, Half h, const RangePtr& range, eImageBufferType out) const {
    const ImagePtr result = Image::create(in->getGeometry(), out);
    family().fill(in, h, range, result);
    return result;
  }
};
INSTANTIATE_TEST_SUITE_P(All, HistogramMedians,
                         ::testing::Combine(::testing::Range(std::size_t{0}, families.size()),
                                            ::testing::ValuesIn(allTypes())),
                         [](const auto& info) {
                           return families[std::get<0>(info.param)].name + std::string("_") +
                                  image::toString(std::get<1>(info.param));
                         });

// The largest exact range, the one above it, the whole type, and ranges that leave samples out.
TEST_P(HistogramMedians, EveryRangeOutputTypeAndInstructionSet) {
  const ImagePtr in = rangeImage({75, 21, 2, 2, 1}, type(), lowest(), highest());
  const double low = std::max(lowest(), -100.0) + 3;
  std::vector<RangePtr> ranges = {
      makeRange(lowest(), highest()), makeRange(low, low + 50.9), makeRange(low - 20, low + 235),
      makeRange(low - 20, low + 236), makeRange(low, low),        makeRange(-1e300, 1e300),
      makeRange(-500, -300),          makeRange(40000, 1e12)};
  if (isReal()) ranges.push_back(makeRange(-2.5, 7.25));
  for (const RangePtr& range : ranges)
    for (const auto out : allTypes()) {
      const ImagePtr expected = reference(*in, {2, 1, 0}, range, out);
      for (const auto& sets : offeredSets()) {
        const ForcedSets forced(family().kernelClass(), sets);
        EXPECT_TRUE(sameBits(*run(in, {2, 1, 0}, range, out), *expected))
            << core::toString(sets.getSets()) << " " << dataItemToText(*range) << " to "
            << image::toString(out);
      }
    }
}

// Windows of 1 to 289 samples, 255 among them, larger than the image or not, and strips of all widths.
TEST_P(HistogramMedians, EverySizeOfWindowAndImage) {
  std::vector<Half> halves = {{0, 0, 0}, {7, 8, 0}, {8, 8, 0}, {1, 0, 0}, {0, 3, 0}};
  if (family().volumes) halves.insert(halves.end(), {{1, 1, 1}, {0, 2, 3}, {2, 1, 5}});
  const RangePtr range = makeRange(-100, 120);
  for (const Half h : halves)
    for (const ImageGeometry& shape :
         {ImageGeometry{1, 1}, {1, 7, 2}, {40, 1}, {17, 5, 3}, {19, 33}, {530, 6}, {6, 200}}) {
      const ImagePtr in = withGaps(*rangeImage(shape, type(), std::max(lowest(), -100.0), 120), shape.x % 4);
      const ImagePtr expected = reference(*in, h, range, type());
      for (const auto& sets : offeredSets()) {
        const ForcedSets forced(family().kernelClass(), sets);
        const ImagePtr out = withGaps(*in, 1);
        family().fill(in, h, range, out);
        EXPECT_TRUE(sameBits(*out, *expected)) << core::toString(sets.getSets()) << ", half " << h.x << " "
                                               << h.y << " " << h.z << ", " << shape.x << " x " << shape.y;
      }
    }
}

TEST_P(HistogramMedians, BitsDoNotDependOnThreadsPlaceOrCallForm) {
  const ImagePtr in = rangeImage({700, 150, 2}, type(), lowest(), highest());
  const RangePtr range = makeRange(lowest(), highest());
  const Half h = {3, 2, family().volumes ? 1 : 0};
  const ImagePtr expected = run(in, h, range, type());
  EXPECT_TRUE(sameBits(*expected, *reference(*in, h, range, type())));
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(family().kernelClass(), sets);
    for (const std::size_t threads : {1u, 3u, 7u}) {
      core::ActionRunner::getInstance().setThreadCount(threads);
      const ImagePtr same = copyOf(*in);
      family().fill(same, h, range, same);
      EXPECT_TRUE(sameBits(*same, *expected)) << "in place, " << threads << " threads";
      EXPECT_TRUE(sameBits(*run(in, h, range, type()), *expected)) << threads << " threads";
    }
    core::ActionRunner::getInstance().setThreadCount(0);
  }
  EXPECT_TRUE(sameBits(image::hostImage(family().create(in, h, range), "created"), *expected));
  EXPECT_TRUE(sameBits(image::hostImage(family().createAsync(in, h, range), "async"), *expected));
  const ImagePtr out = Image::create(in->getGeometry(), type());
  EXPECT_EQ(family().fillAsync(in, h, range, out), out);
  EXPECT_TRUE(sameBits(*out, *expected));
}

class HistogramFamilies : public ::testing::TestWithParam<std::size_t> {
protected:
  const Family& family() const { return families[GetParam()]; }
};
INSTANTIATE_TEST_SUITE_P(All, HistogramFamilies, ::testing::Range(std::size_t{0}, families.size()),
                         [](const auto& info) { return std::string(families[info.param].name); });

// The numbers of samples at which counters grow, and many periods of the mirrored image.
TEST_P(HistogramFamilies, WindowsFarLargerThanTheImage) {
  const ImagePtr in = rangeImage({5, 4}, eImageBufferType::UInt16, 1000, 1255);
  const RangePtr range = makeRange(1000, 1255);
  for (const Half h : {Half{150, 120, 0}, Half{0, 500, 0}, Half{400, 3, 0}, Half{128, 0, 0},
                       Half{127, 128, 0}, Half{128, 128, 0}}) {
    const ImagePtr expected = reference(*in, h, range, eImageBufferType::UInt16);
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(family().kernelClass(), sets);
      const ImagePtr out = Image::create(in->getGeometry(), eImageBufferType::UInt16);
      family().fill(in, h, range, out);
      EXPECT_TRUE(sameBits(*out, *expected)) << core::toString(sets.getSets()) << " " << h.x << " " << h.y;
    }
  }
}

TEST_P(HistogramFamilies, NanAndInfinitiesHaveALevel) {
  const ImagePtr in = rangeImage({60, 40}, eImageBufferType::Real32, -50, 50);
  std::mt19937 random(5);
  forEachSample(in->getGeometry(), [&](auto... at) {
    const double odd[] = {NAN, -NAN, INFINITY, -INFINITY, 3e38, -3e38};
    if (random() % 10 == 0) setSample(*in, odd[random() % 6], at...);
  });
  const double largest = std::numeric_limits<float>::max();
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(family().kernelClass(), sets);
    for (const double bound : {50.0, largest, 1e300}) {
      const ImagePtr out = Image::create(in->getGeometry(), eImageBufferType::Real32);
      family().fill(in, {2, 2, 0}, makeRange(-bound, bound), out);
      const double limit = std::min(bound, largest);
      EXPECT_TRUE(
          sameBits(*out, *reference(*in, {2, 2, 0}, makeRange(-limit, limit), eImageBufferType::Real32)));
    }
  }
}

TEST_P(HistogramFamilies, BadCallsNameWhatIsWrongAndTouchNothing) {
  const ImagePtr in = rangeImage({20, 10}, eImageBufferType::UInt8, 0, 255);
  const ImagePtr tall = rangeImage({20, 11}, eImageBufferType::UInt8, 0, 255), before = copyOf(*tall);
  const RangePtr range = makeRange(0, 255);
  const Half h = {1, 1, 0};
  expectFailure({"InImg"}, [&] { family().create(nullptr, h, range); });
  expectFailure({"InInputRange", "null"}, [&] { family().create(in, h, nullptr); });
  expectFailure({"InInputRange", "minimum=3,maximum=2"},
                [&] { family().fill(in, h, makeRange(3, 2), tall); });
  expectFailure({"InInputRange", "minimum: nan"}, [&] { family().create(in, h, makeRange(NAN, 2)); });
  expectFailure({"InInputRange", "maximum: inf"}, [&] { family().create(in, h, makeRange(0, INFINITY)); });
  expectFailure({"InHalfKnlSizeY", "32768"}, [&] { family().create(in, {1, 32768, 0}, range); });
  expectFailure({"20 x 11"}, [&] { family().fillAsync(in, h, range, tall); });
  EXPECT_TRUE(sameBits(*tall, *before));
}

}  // namespace
}  // namespace vexo::imaproc::filter
