// The medians that count in histograms: of 2d images in constant time, cut along Y and along X, swept, and
// 3d.
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistoO1Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/HistoOkMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/MedianReference.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;
using RangePtr = boost::shared_ptr<const attr::Range>;
constexpr auto real32 = eImageBufferType::Real32, uint16 = eImageBufferType::UInt16;

RangePtr makeRange(double minimum, double maximum) {
  return boost::make_shared<attr::Range>(minimum, maximum);
}

enum class eMedian { O1, XStrip, Ok, Volumes };
const char* const names[] = {"HistoO1Median2dImg", "HistoO1MedianXStrip2dImg", "HistoOkMedian2dImg",
                             "HistoMedian3dImg"};
constexpr eMedian medians[] = {eMedian::O1, eMedian::XStrip, eMedian::Ok, eMedian::Volumes};

ImagePtr run(eMedian median, const ImagePtr& in, const Half& h, const RangePtr& range,
             eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  const auto x = static_cast<std::uint32_t>(h.x), y = static_cast<std::uint32_t>(h.y),
             z = static_cast<std::uint32_t>(h.z);
  if (median == eMedian::O1) histoO1Median2dImg(in, x, y, range, out);
  if (median == eMedian::XStrip) histoO1MedianXStrip2dImg(in, x, y, range, out);
  if (median == eMedian::Ok) histoOkMedian2dImg(in, x, y, range, out);
  if (median == eMedian::Volumes) histoMedian3dImg(in, x, y, z, range, out);
  return out;
}

/// The level of a sample, and the sample of a level, as the manual states them.
struct Levels {
  bool exact;
  double minimum, maximum;

  Levels(const attr::Range& range, eImageBufferType type)
      : exact(false), minimum(range.minimum.getValue()), maximum(range.maximum.getValue()) {
    if (type == real32) return;
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

ImagePtr reference(const Image& in, const Half& h, const RangePtr& range, eImageBufferType type) {
  const Levels levels(*range, in.getBufferType());
  return makeImage(in.getGeometry(), type, [&](auto... at) {
    std::vector<double> window = windowOf(in, h, at...);
    for (double& sample : window) sample = levels.of(sample);
    return converted(levels.sampleOf(middleOf(window), in.getBufferType() != real32), type);
  });
}

/// On every instruction set.
void expectMedian(eMedian median, const ImagePtr& in, const Half& h, const RangePtr& range,
                  eImageBufferType type, const ImagePtr& expected) {
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    EXPECT_TRUE(sameBits(*run(median, in, h, range, type), *expected))
        << core::toString(sets.getSets()) << ", " << dataItemToText(*range) << " to " << image::toString(type)
        << ", half " << h.x << " " << h.y << " " << h.z << ", " << toString(in->getGeometry());
  }
}

class HistogramMedians : public testing::TestWithParam<std::tuple<eMedian, eImageBufferType>> {
protected:
  eMedian median() const { return std::get<0>(GetParam()); }
  eImageBufferType type() const { return std::get<1>(GetParam()); }
  double lowest() const {
    return image::visitBufferType(type(), [](auto zero) {
      return std::max(-1e6, double(std::numeric_limits<decltype(zero)>::lowest()));
    });
  }
  double highest() const {
    return image::visitBufferType(
        type(), [](auto zero) { return std::min(1e6, double(std::numeric_limits<decltype(zero)>::max())); });
  }
};
INSTANTIATE_TEST_SUITE_P(All, HistogramMedians,
                         testing::Combine(testing::ValuesIn(medians), testing::ValuesIn(allTypes())),
                         [](const auto& info) {
                           return names[static_cast<int>(std::get<0>(info.param))] + std::string("_") +
                                  image::toString(std::get<1>(info.param));
                         });

// The largest exact range, the one above it, the whole type, and ranges that leave samples out.
TEST_P(HistogramMedians, EveryRangeOutputTypeAndInstructionSet) {
  const ImagePtr in = rangeImage({75, 21, 2, 2, 1}, type(), lowest(), highest(), 7);
  const double low = std::max(lowest(), -100.0) + 3;
  std::vector<RangePtr> ranges = {
      makeRange(lowest(), highest()), makeRange(low, low + 50.9), makeRange(low - 20, low + 235),
      makeRange(low - 20, low + 236), makeRange(low, low),        makeRange(-1e300, 1e300),
      makeRange(-500, -300),          makeRange(40000, 1e12)};
  if (type() == real32) ranges.push_back(makeRange(-2.5, 7.25));
  for (const RangePtr& range : ranges)
    for (const auto out : allTypes())
      expectMedian(median(), in, {2, 1}, range, out, reference(*in, {2, 1}, range, out));
}

// Windows of 1 to 289 samples, 255 among them, larger than the image or not, and strips of all widths.
TEST_P(HistogramMedians, EverySizeOfWindowAndImage) {
  std::vector<Half> halves = {{0, 0}, {7, 8}, {8, 8}, {1, 0}, {0, 3}};
  if (median() == eMedian::Volumes) halves.insert(halves.end(), {{1, 1, 1}, {0, 2, 3}, {2, 1, 5}});
  const RangePtr range = makeRange(-100, 120);
  for (const Half& h : halves)
    for (const ImageGeometry& shape :
         {ImageGeometry{1, 1}, {1, 7, 2}, {40, 1}, {17, 5, 3}, {19, 33}, {530, 6}, {6, 200}}) {
      const ImagePtr in = rangeImage(shape, type(), std::max(lowest(), -100.0), 120, 7);
      expectMedian(median(), in, h, range, type(), reference(*in, h, range, type()));
    }
  const ImagePtr large = rangeImage({700, 150, 2}, type(), lowest(), highest(), 7);
  const RangePtr whole = makeRange(lowest(), highest());
  expectMedian(median(), large, {3, 2}, whole, type(), reference(*large, {3, 2}, whole, type()));
}

class HistogramMedianKinds : public testing::TestWithParam<eMedian> {};
INSTANTIATE_TEST_SUITE_P(All, HistogramMedianKinds, testing::ValuesIn(medians),
                         [](const auto& info) { return names[static_cast<int>(info.param)]; });

// The numbers of samples at which counters grow, and many periods of the mirrored image.
TEST_P(HistogramMedianKinds, WindowsFarLargerThanTheImage) {
  const ImagePtr in = rangeImage({5, 4}, uint16, 1000, 1255, 7);
  const RangePtr range = makeRange(1000, 1255);
  for (const Half& h :
       {Half{150, 120}, Half{0, 500}, Half{400, 3}, Half{128, 0}, Half{127, 128}, Half{128, 128}})
    expectMedian(GetParam(), in, h, range, uint16, reference(*in, h, range, uint16));
}

TEST_P(HistogramMedianKinds, NanAndInfinitiesHaveALevel) {
  const ImagePtr in = rangeImage({60, 40}, real32, -50, 50, 7);
  std::mt19937 random(5);
  forEachSample(in->getGeometry(), [&](auto... at) {
    const double odd[] = {NAN, -NAN, INFINITY, -INFINITY, 3e38, -3e38};
    if (random() % 10 == 0) setSample(*in, odd[random() % 6], at...);
  });
  const double largest = std::numeric_limits<float>::max();
  for (const double bound : {50.0, largest, 1e300}) {
    const double limit = std::min(bound, largest);
    expectMedian(GetParam(), in, {2, 2}, makeRange(-bound, bound), real32,
                 reference(*in, {2, 2}, makeRange(-limit, limit), real32));
  }
}

}  // namespace
}  // namespace vexo::imaproc::filter
