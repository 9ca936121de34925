#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLvl1.h"
#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;

/// Mean and deviation of the plane, or volume, of a sample.
std::pair<double, double> statisticsOf(const Image& image, bool volumes, std::size_t z, std::size_t c,
                                       std::size_t t) {
  double sum = 0, squares = 0, count = 0;
  const auto forEachOfIt = [&](const auto& visit) {
    forEachSample(image.getGeometry(), [&](auto x, auto y, auto pz, auto pc, auto pt) {
      if (pc == c && pt == t && (volumes || pz == z)) visit(getSample(image, x, y, pz, pc, pt));
    });
  };
  forEachOfIt([&](double v) { sum += v, ++count; });
  forEachOfIt([&](double v) { squares += std::pow(v - sum / count, 2); });
  return {sum / count, std::sqrt(squares / count)};
}

void expectMap(const Image& map, const Image& a, const Image& b, bool volumes) {
  std::map<std::array<std::size_t, 3>, std::array<double, 4>> statistics;
  int failures = 0;
  forEachSample(map.getGeometry(), [&](auto x, auto y, auto... at) {
    auto& s = statistics[{at...}];
    if (s[1] == 0) {
      std::tie(s[0], s[1]) = statisticsOf(a, volumes, at...);
      std::tie(s[2], s[3]) = statisticsOf(b, volumes, at...);
    }
    const double expected =
        (getSample(a, x, y, at...) - s[0]) * (getSample(b, x, y, at...) - s[2]) / (s[1] * s[3]);
    if (!(std::abs(getSample(map, x, y, at...) - expected) <= 2e-6 * (1 + std::abs(expected))) &&
        failures++ < 3)
      ADD_FAILURE() << x << " " << y << ": " << getSample(map, x, y, at...) << " instead of " << expected;
  });
}

/// Whether of volumes.
class Pearson : public testing::TestWithParam<bool> {
protected:
  ImagePtr run(const ImagePtr& a, const ImagePtr& b) const {
    return boost::dynamic_pointer_cast<Image>(GetParam() ? pearsonColocalization3dImg(a, b)
                                                         : pearsonColocalization2dImg(a, b));
  }
};
INSTANTIATE_TEST_SUITE_P(All, Pearson, testing::Bool());

TEST_P(Pearson, EveryPairOfTypesAndInstructionSet) {
  for (const auto first : allTypes())
    for (const auto second : allTypes()) {
      SCOPED_TRACE(std::string(image::toString(first)) + " and " + image::toString(second));
      const ImagePtr a = withGaps(*randomImage({1037, 9, 2, 2, 2}, first), 1);
      const ImagePtr b = randomImage({1037, 9, 2, 2, 2}, second, 2);
      const ImagePtr expected = run(a, b);
      expectMap(*expected, *a, *b, GetParam());
      for (const auto& sets : offeredSets()) {
        const ForcedSets forced(sets);
        EXPECT_TRUE(sameBits(*run(a, b), *expected)) << core::toString(sets.getSets());
      }
    }
}

// What the map is for: its mean is the coefficient, 1 for an image and itself, -1 for its negative.
TEST_P(Pearson, MeanOfTheMapIsTheCoefficient) {
  const ImagePtr a = randomImage({64, 64}, eImageBufferType::Int16);
  const ImagePtr negative =
      makeImage({64, 64}, eImageBufferType::Int16, [&](auto... at) { return -getSample(*a, at...); });
  EXPECT_NEAR(statisticsOf(*run(a, a), true, 0, 0, 0).first, 1, 1e-6);
  EXPECT_NEAR(statisticsOf(*run(a, negative), true, 0, 0, 0).first, -1, 1e-6);
}

TEST_P(Pearson, ConstantImagesGiveZeros) {
  const ImagePtr constant = constantImage({50, 20}, eImageBufferType::UInt16, 7);
  for (const ImagePtr& other : {constant, randomImage({50, 20}, eImageBufferType::Int32)})
    expectSamples(*run(constant, other), [](auto...) { return 0; });
}

}  // namespace
}  // namespace vexo::imaproc::filter
