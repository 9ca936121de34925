#include <cmath>
#include <functional>

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"
#include "tools/Calls.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;
using InPtr = boost::shared_ptr<const image::BaseImage>;
using OutPtr = boost::shared_ptr<image::BaseImage>;

struct Family {
  bool volumes;
  std::string kernel;
  std::function<OutPtr(InPtr, InPtr)> create, createAsync;
  std::function<void(InPtr, InPtr, OutPtr)> fill;
  std::function<OutPtr(InPtr, InPtr, OutPtr)> fillAsync;
};
template <class Run, class Start>
Family makeFamily(bool volumes, const char* kernel, Run run, Start start) {
  return {volumes,
          std::string("vexo::imaproc::filter::") + kernel,
          [=](auto... a) { return run(a...); },
          [=](auto... a) { return getAsyncProcessorOutput(start(a...)); },
          [=](auto... a) { run(a...); },
          [=](auto... a) { return getAsyncProcessorOutput(start(a...)); }};
}
const Family families[] = {
    makeFamily(
        false, "PearsonColocalization2dImgLvl3", [](auto... a) { return pearsonColocalization2dImg(a...); },
        [](auto... a) { return pearsonColocalization2dImg_async(a...); }),
    makeFamily(
        true, "PearsonColocalization3dImgLvl3", [](auto... a) { return pearsonColocalization3dImg(a...); },
        [](auto... a) { return pearsonColocalization3dImg_async(a...); })};

/// Mean and deviation of the plane, or volume, of a sample.
std::pair<double, double> statisticsOf(const Image& image, bool volumes, std::size_t z, std::size_t c,
                                       std::size_t t) {
  double sum = 0, squares = 0, count = 0;
  forEachSample(image.getGeometry(), [&](auto x, auto y, auto pz, auto pc, auto pt) {
    if (pc != c || pt != t || (!volumes && pz != z)) return;
    sum += getSample(image, x, y, pz, pc, pt);
    ++count;
  });
  const double mean = sum / count;
  forEachSample(image.getGeometry(), [&](auto x, auto y, auto pz, auto pc, auto pt) {
    if (pc == c && pt == t && (volumes || pz == z))
      squares += std::pow(getSample(image, x, y, pz, pc, pt) - mean, 2);
  });
  return {mean, std::sqrt(squares / count)};
}

void expectMap(const Image& map, const Image& a, const Image& b, bool volumes) {
  const ImageGeometry& g = map.getGeometry();
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < g.z; ++z) {
        const auto [meanA, deviationA] = statisticsOf(a, volumes, z, c, t);
        const auto [meanB, deviationB] = statisticsOf(b, volumes, z, c, t);
        for (std::size_t y = 0; y < g.y; ++y)
          for (std::size_t x = 0; x < g.x; ++x) {
            const double expected = (getSample(a, x, y, z, c, t) - meanA) *
                                    (getSample(b, x, y, z, c, t) - meanB) / (deviationA * deviationB);
            ASSERT_NEAR(getSample(map, x, y, z, c, t), expected, 2e-6 * (1 + std::abs(expected)))
                << x << " " << y << " " << z << " " << c << " " << t;
          }
      }
}

class Pearson : public ::testing::TestWithParam<std::size_t> {
protected:
  const Family& family() const { return families[GetParam()]; }
};
INSTANTIATE_TEST_SUITE_P(All, Pearson, ::testing::Values(0, 1));

TEST_P(Pearson, EveryPairOfTypesAndInstructionSet) {
  for (const auto first : allTypes())
    for (const auto second : allTypes()) {
      const ImagePtr a = withGaps(*randomImage({1037, 9, 2, 2, 2}, first), 1);
      const ImagePtr b = randomImage({1037, 9, 2, 2, 2}, second, 2);
      const ImagePtr expected = Image::create(a->getGeometry(), eImageBufferType::Real32);
      family().fill(a, b, expected);
      expectMap(*expected, *a, *b, family().volumes);
      for (const auto& sets : offeredSets()) {
        const ForcedSets forced(family().kernel, sets);
        EXPECT_TRUE(sameBits(image::hostImage(family().create(a, b), "map"), *expected))
            << core::toString(sets.getSets()) << " " << image::toString(first) << " "
            << image::toString(second);
      }
    }
}

TEST_P(Pearson, CallFormsThreadsAndPlaceGiveTheSameMap) {
  const ImagePtr a = randomImage({80, 170, 9}, eImageBufferType::Real32),
                 b = randomImage({80, 170, 9}, eImageBufferType::UInt8, 2);
  const OutPtr expected = family().create(a, b);
  EXPECT_EQ(expected->getBufferType(), eImageBufferType::Real32);
  const Image& map = image::hostImage(expected, "map");
  for (const std::size_t threads : {1u, 3u, 7u}) {
    core::ActionRunner::getInstance().setThreadCount(threads);
    const ImagePtr same = copyOf(*a), other = Image::create(a->getGeometry(), eImageBufferType::Real32);
    family().fill(same, b, same);
    EXPECT_TRUE(sameBits(*same, map));
    EXPECT_EQ(family().fillAsync(a, b, other), other);
    EXPECT_TRUE(sameBits(*other, map));
    EXPECT_TRUE(sameBits(image::hostImage(family().createAsync(a, b), "map"), map));
  }
  core::ActionRunner::getInstance().setThreadCount(0);
}

// What the map is for: its mean is the coefficient, 1 for an image and itself, -1 for its negative.
TEST_P(Pearson, MeanOfTheMapIsTheCoefficient) {
  const ImagePtr a = randomImage({64, 64}, eImageBufferType::Int16);
  const ImagePtr negative = copyOf(*a);
  forEachSample(a->getGeometry(), [&](auto... at) { setSample(*negative, -getSample(*a, at...), at...); });
  const auto meanOf = [](const OutPtr& map) {
    return statisticsOf(image::hostImage(map, "map"), true, 0, 0, 0).first;
  };
  EXPECT_NEAR(meanOf(family().create(a, a)), 1, 1e-6);
  EXPECT_NEAR(meanOf(family().create(a, negative)), -1, 1e-6);
}

TEST_P(Pearson, ConstantImagesGiveZeros) {
  const ImagePtr constant = Image::create({50, 20}, eImageBufferType::UInt16);
  forEachSample(constant->getGeometry(), [&](auto... at) { setSample(*constant, 7, at...); });
  const ImagePtr other = randomImage({50, 20}, eImageBufferType::Int32);
  for (const OutPtr& map : {family().create(constant, other), family().create(constant, constant)})
    forEachSample(other->getGeometry(),
                  [&](auto... at) { EXPECT_EQ(getSample(image::hostImage(map, "map"), at...), 0); });
}

TEST_P(Pearson, BadCallsNameWhatIsWrongAndTouchNothing) {
  const ImagePtr a = randomImage({20, 10}, eImageBufferType::UInt8),
                 tall = randomImage({20, 11}, eImageBufferType::UInt8), before = copyOf(*a);
  const ImagePtr large = Image::create({20, 11}, eImageBufferType::Real32);
  expectFailure({family().volumes ? "InImg3d1" : "InImg1"}, [&] { family().create(nullptr, a); });
  expectFailure({family().volumes ? "InImg3d2" : "InImg2"}, [&] { family().create(a, nullptr); });
  expectFailure({"20 x 10", "20 x 11"}, [&] { family().create(a, tall); });
  expectFailure({"20 x 11"}, [&] { family().fill(a, a, large); });
  expectFailure({"OutRealImg", "uint8"}, [&] { family().fill(a, a, a); });
  EXPECT_TRUE(sameBits(*a, *before));
}

}  // namespace
}  // namespace vexo::imaproc::filter
