#include <cmath>
#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLevels.h"
#include "VEXOSerialization/JsonArchive.h"

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
      << ::testing::PrintToString(a) << ' ' << ::testing::PrintToString(b);
}

/// All values of 8 and 16-bit types, both ends of the others in most samples.
ImagePtr wideImage(const ImageGeometry& g, eImageBufferType type) {
  const ImagePtr result = Image::create(g, type);
  std::mt19937 random(7);
  forEachSample(g, [&](auto x, auto y, auto z, auto c, auto t) {
    const auto bits = static_cast<std::uint32_t>(random());
    image::visitBufferType(type, [&](auto zero) {
      using T = decltype(zero);
      using Limits = std::numeric_limits<T>;
      T value = static_cast<T>(bits);
      if constexpr (std::is_same_v<T, float>)
        value = static_cast<float>(static_cast<std::int32_t>(bits)) * 1e-5f;
      else if (sizeof(T) == 4 && bits % 3)
        value = bits % 3 == 1 ? Limits::max() : Limits::lowest();
      result->getRow<T>(y, z, c, t)[x] = value;
    });
  });
  return result;
}

/// Instruction sets whose kernels exist for the type.
std::vector<processor::InstructionSetsIdentifier> setsFor(eImageBufferType type) {
  auto sets = offeredSets();
  if (type == eImageBufferType::Real32 && core::isAvailable(eIS_AVX)) sets.push_back({eIS_AVX});
  return sets;
}

class StatsMsrTypes : public ::testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, StatsMsrTypes, ::testing::ValuesIn(allTypes()),
                         [](const auto& info) { return image::toString(info.param); });

TEST_P(StatsMsrTypes, EqualsReferenceWhateverSetThreadsAndStrides) {
  auto& runner = core::ActionRunner::getInstance();
  const std::size_t threads = runner.getThreadCount();
  for (const ImageGeometry g :
       {ImageGeometry{1}, {15, 1}, {1, 5000}, {8191, 2}, {1037, 333}, {64, 700, 1, 2, 3}, {301, 97, 9, 1, 2}})
    for (const bool wide : {false, true}) {
      const ImagePtr image = wide ? wideImage(g, GetParam()) : randomImage(g, GetParam());
      const Values expected = reference(*image);
      const Values found = valuesOf(*statsMsr(image));
      SCOPED_TRACE(toString(g) + (wide ? " wide" : ""));
      expectEqual(expected, found);
      for (const auto& sets : setsFor(GetParam())) {
        SCOPED_TRACE(core::toString(sets.getSets()));
        const ForcedSets forced2d("vexo::imaproc::glbmsr::StatsMsr2dLvl3", sets);
        const ForcedSets forced3d("vexo::imaproc::glbmsr::StatsMsr3dLvl3", sets);
        expectSame(found, valuesOf(*statsMsr(image)));
        expectSame(found, valuesOf(*statsMsr(withGaps(*image, 1))));
      }
      for (const std::size_t count : {1, 3, 7}) {
        runner.setThreadCount(count);
        expectSame(found, valuesOf(*statsMsr(image)));
      }
      runner.setThreadCount(threads);
    }
}

TEST_P(StatsMsrTypes, ConstantImagesHaveNoDeviation) {
  image::visitBufferType(GetParam(), [&](auto zero) {
    using T = decltype(zero);
    for (const double value :
         {double(std::numeric_limits<T>::max()), double(std::numeric_limits<T>::lowest())}) {
      const ImagePtr image = Image::create({900, 300, 2}, GetParam());
      forEachSample(image->getGeometry(),
                    [&](auto x, auto y, auto z, auto, auto) { setSample(*image, value, x, y, z); });
      expectSame({value, value, value, 0, value * 540000, 540000}, valuesOf(*statsMsr(image)));
    }
  });
}

/// A small deviation on a large offset, and a corner far from everything else.
TEST(StatsMsr, OffsetsDoNotSpoilTheDeviation) {
  for (const auto type : {eImageBufferType::Real32, eImageBufferType::UInt32, eImageBufferType::Int32})
    for (const bool corner : {false, true}) {
      const ImagePtr image = randomImage({500, 400}, eImageBufferType::Int8),
                     out = Image::create({500, 400}, type);
      forEachSample(image->getGeometry(), [&](auto x, auto y, auto, auto, auto) {
        setSample(*out, 16000000 + getSample(*image, x, y), x, y);
      });
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
        for (const auto& sets : setsFor(eImageBufferType::Real32)) {
          if (&first == &second) continue;
          const ForcedSets forced("vexo::imaproc::glbmsr::StatsMsr2dLvl3", sets);
          const ImagePtr image = Image::create({60, 90}, eImageBufferType::Real32);
          forEachSample(image->getGeometry(),
                        [&](auto x, auto y, auto, auto, auto) { setSample(*image, c.value, x, y); });
          setSample(*image, c.odd[0], first[0], first[1]);
          setSample(*image, c.odd[1], second[0], second[1]);
          const Values found = valuesOf(*statsMsr(image));
          for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_TRUE(found[i] == c.expected[i] || (std::isnan(found[i]) && std::isnan(c.expected[i])))
                << i << ": " << found[i] << " instead of " << c.expected[i];
          EXPECT_FALSE(std::signbit(found[0]) && found[0] == 0);
        }
}

TEST(StatsMsr, CallFormsAgreeAndARunFillsTheGivenResult) {
  const ImagePtr image = randomImage({130, 70, 3}, eImageBufferType::Int16);
  const Values expected = valuesOf(*statsMsr(image));
  const auto given = boost::make_shared<attr::StatsResult>();
  statsMsr(image, given);
  expectSame(expected, valuesOf(*given));
  expectSame(expected, valuesOf(*getAsyncProcessorOutput(statsMsr_async(image))));
  const auto other = boost::make_shared<attr::StatsResult>();
  EXPECT_EQ(other, getAsyncProcessorOutput(statsMsr_async(image, other)));
  expectSame(expected, valuesOf(*other));
  EXPECT_THROW(statsMsr(nullptr), BaseException);
  EXPECT_THROW(statsMsr(image, nullptr), BaseException);

  // A result of an earlier call is not written over by the next one.
  const auto processor = StatsMsrLvl1::createProcessor();
  processor->init();
  processor->set<attr::InImg>(image);
  processor::executeSyncRun(processor);
  const auto first = processor->getStorage<attr::OutStatsResult>();
  processor->set<attr::InImg>(randomImage({5, 5}, eImageBufferType::UInt8));
  processor::executeSyncRun(processor);
  EXPECT_NE(first, processor->getStorage<attr::OutStatsResult>());
  expectSame(expected, valuesOf(*first));
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
