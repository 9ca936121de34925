#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLevels.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"
#include "VEXOSerialization/JsonArchive.h"
#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::imaproc::glbmsr {
namespace {

using namespace vexo::test;
using Values = std::array<double, 6>;  // minimum, maximum, mean, deviation, sum, count

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

Values valuesOf(const attr::StatsResult& r) {
  return {r.minimum.getValue(),           r.maximum.getValue(), r.mean.getValue(),
          r.standardDeviation.getValue(), r.sum.getValue(),     r.count.getValue()};
}

/// Two passes in 64-bit mantissas, sample by sample.
Values reference(const Image& image) {
  long double sum = 0, squares = 0;
  double low = infinity, high = -infinity, count = 0;
  forEachSample(image.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    const double v = getSample(image, x, y, z, c, t);
    sum += v;
    count += 1;
    if (v < low) low = v;
    if (v > high) high = v;
  });
  const long double mean = sum / count;
  forEachSample(image.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    const long double d = getSample(image, x, y, z, c, t) - mean;
    squares += d * d;
  });
  return {low, high, double(mean), double(std::sqrt(squares / count)), double(sum), count};
}

void expectEqual(const Values& expected, const Values& found) {
  const char* const names[] = {"minimum", "maximum", "mean", "standardDeviation", "sum", "count"};
  for (const int exact : {0, 1, 5}) EXPECT_EQ(expected[exact], found[exact]) << names[exact];
  // A sum near 0 is off by a part of what it is made of.
  const double size = std::max(std::abs(expected[2]), expected[3]);
  EXPECT_NEAR(expected[2], found[2], 1e-12 * size) << names[2];
  EXPECT_NEAR(expected[3], found[3], 1e-12 * expected[3]) << names[3];
  EXPECT_NEAR(expected[4], found[4], 1e-12 * size * expected[5]) << names[4];
}

/// Bits, so that NaN equals itself.
void expectSame(const Values& a, const Values& b) {
  EXPECT_EQ(0, std::memcmp(a.data(), b.data(), sizeof a))
      << testing::PrintToString(a) << ' ' << testing::PrintToString(b);
}

/// All values of 8 and 16-bit types, both ends of the others in most samples.
ImagePtr wideImage(const ImageGeometry& g, eImageBufferType type) {
  std::mt19937 random(7);
  return image::visitBufferType(type, [&](auto zero) {
    using Limits = std::numeric_limits<decltype(zero)>;
    return makeImage(g, type, [&](auto...) {
      const auto bits = static_cast<std::uint32_t>(random());
      if (!Limits::is_integer) return static_cast<double>(static_cast<std::int32_t>(bits)) * 1e-5;
      if (sizeof(zero) == 4 && bits % 3) return double(bits % 3 == 1 ? Limits::max() : Limits::lowest());
      return double(static_cast<decltype(zero)>(bits));
    });
  });
}

class StatsMsrTypes : public testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, StatsMsrTypes, testing::ValuesIn(allTypes()), TypeName());

TEST_P(StatsMsrTypes, EqualsReferenceWhateverSetThreadsAndStrides) {
  auto& runner = core::ActionRunner::getInstance();
  for (const ImageGeometry g :
       {ImageGeometry{1}, {15, 1}, {1, 5000}, {8191, 2}, {1037, 333}, {64, 700, 1, 2, 3}, {301, 97, 9, 1, 2}})
    for (const bool wide : {false, true}) {
      const ImagePtr image = wide ? wideImage(g, GetParam()) : randomImage(g, GetParam());
      const Values found = valuesOf(*statsMsr(image));
      SCOPED_TRACE(toString(g) + (wide ? " wide" : ""));
      expectEqual(reference(*image), found);
      for (const auto& sets : offeredSets()) {
        SCOPED_TRACE(core::toString(sets.getSets()));
        const ForcedSets forced(sets);
        expectSame(found, valuesOf(*statsMsr(withGaps(*image, 1))));
      }
      runner.setThreadCount(7);
      expectSame(found, valuesOf(*statsMsr(image)));
      runner.setThreadCount(0);
    }
}

TEST_P(StatsMsrTypes, ConstantImagesHaveNoDeviation) {
  image::visitBufferType(GetParam(), [&](auto zero) {
    using Limits = std::numeric_limits<decltype(zero)>;
    for (const double value : {double(Limits::max()), double(Limits::lowest())})
      expectSame({value, value, value, 0, value * 540000, 540000},
                 valuesOf(*statsMsr(constantImage({900, 300, 2}, GetParam(), value))));
  });
}

/// A small deviation on a large offset, and a corner far from everything else.
TEST(StatsMsr, OffsetsDoNotSpoilTheDeviation) {
  for (const auto type : {eImageBufferType::Real32, eImageBufferType::UInt32, eImageBufferType::Int32})
    for (const bool corner : {false, true}) {
      const ImagePtr out = rangeImage({500, 400}, type, 16000000 - 128, 16000000 + 127);
      if (corner) setSample(*out, 0, 0, 0);
      SCOPED_TRACE(std::string(image::toString(type)) + (corner ? " corner" : ""));
      expectEqual(reference(*out), valuesOf(*statsMsr(out)));
    }
}

TEST(StatsMsr, NanAndInfinities) {
  const struct {
    double value;   // of every sample
    double odd[2];  // of two samples
    Values expected;
  } cases[] = {{2, {nan, 5}, {2, 5, nan, nan, nan, 5400}},
               {nan, {nan, nan}, {0, 0, nan, nan, nan, 5400}},
               {nan, {-0.0, nan}, {0, 0, nan, nan, nan, 5400}},
               {nan, {infinity, nan}, {infinity, infinity, nan, nan, nan, 5400}},
               {1, {infinity, 1}, {1, infinity, infinity, nan, infinity, 5400}},
               {1, {-infinity, 1}, {-infinity, 1, -infinity, nan, -infinity, 5400}},
               {1, {-infinity, infinity}, {-infinity, infinity, nan, nan, nan, 5400}}};
  const std::size_t places[][2] = {{0, 0}, {59, 89}, {33, 40}, {1, 1}};
  for (const auto& c : cases)
    for (const auto& first : places)
      for (const auto& second : places)
        for (const auto& sets : offeredSets()) {
          if (&first == &second) continue;
          const ForcedSets forced(sets);
          const ImagePtr image = constantImage({60, 90}, eImageBufferType::Real32, c.value);
          setSample(*image, c.odd[0], first[0], first[1]);
          setSample(*image, c.odd[1], second[0], second[1]);
          const Values found = valuesOf(*statsMsr(image));
          for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_TRUE(found[i] == c.expected[i] || (std::isnan(found[i]) && std::isnan(c.expected[i])))
                << i << ": " << found[i] << " instead of " << c.expected[i];
          EXPECT_FALSE(std::signbit(found[0]) && found[0] == 0);
          // Which sign a NaN has depends on the order of the additions.
          for (const double value : found) EXPECT_FALSE(std::isnan(value) && std::signbit(value));
        }
}

TEST(StatsMsr, ARunDoesNotWriteOverTheResultOfTheOneBefore) {
  const ImagePtr image = randomImage({130, 70, 3}, eImageBufferType::Int16);
  const auto processor = StatsMsrLvl1::createProcessor();
  processor->init();
  processor->set<attr::InImg>(image);
  processor::executeSyncRun(processor);
  const auto first = processor->getStorage<attr::OutStatsResult>();
  processor->set<attr::InImg>(randomImage({5, 5}, eImageBufferType::UInt8));
  processor::executeSyncRun(processor);
  EXPECT_NE(first, processor->getStorage<attr::OutStatsResult>());
  expectEqual(reference(*image), valuesOf(*first));
}

TEST(StatsMsr, SecondLevelsMeasureOnePlaneAndOneVolume) {
  const ImagePtr plane = randomImage({200, 300}, eImageBufferType::Real32);
  const auto p2 = StatsMsr2dLvl2::createProcessor();
  p2->init();
  p2->set<attr::InSubImg2d>(plane);
  processor::executeSyncRun(p2);
  expectEqual(reference(*plane), valuesOf(*p2->getStorage<attr::OutStatsResult>()));
  const ImagePtr volume = randomImage({20, 30, 40}, eImageBufferType::UInt16);
  const auto p3 = StatsMsr3dLvl2::createProcessor();
  p3->init();
  p3->set<attr::InSubImg3d>(volume);
  processor::executeSyncRun(p3);
  expectEqual(reference(*volume), valuesOf(*p3->getStorage<attr::OutStatsResult>()));
}

TEST(StatsMsr, ResultGoesThroughAnArchive) {
  const ImagePtr image = Image::create({2, 1}, eImageBufferType::Real32);
  setSample(*image, nan, 0, 0);
  setSample(*image, 0.1f, 1, 0);
  const auto given = boost::make_shared<attr::StatsResult>();
  statsMsr(image, given);
  attr::OutStatsResult attribute, back;
  attribute.setStorage(given);
  JsonOArchive out;
  attribute.write(out);
  JsonIArchive in(out.getText());
  back.read(in);
  expectSame(valuesOf(*given), valuesOf(*back.getStorage()));
  EXPECT_EQ("StatsResult", attribute.getValueTypeName());
}

}  // namespace
}  // namespace vexo::imaproc::glbmsr
