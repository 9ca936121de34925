#include "VEXOMath/Gaussian.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tools/Calls.h"

namespace vexo {
namespace {

constexpr float defaultCoverage = 0.997f;

KernelXY alongX(float stdDev, float coverage = defaultCoverage, std::uint32_t limit = 0) {
  KernelXY x, y;
  separableGaussianSmoothing(stdDev, 0, coverage, limit, x, y);
  return x;
}

std::size_t halfOf(const KernelXY& kernel) {
  return kernel.getPoints().size() / 2;
}

// Half sizes by the quantile of the normal distribution, computed elsewhere: 0.5 -> 0.67449, 0.68 -> 0.99446,
// 0.95 -> 1.95996, 0.997 -> 2.96774, 0.999999 -> 4.89164 deviations.
TEST(Gaussian, CoverageDecidesTheHalfSize) {
  struct Row {
    float coverage, stdDev;
    std::size_t half;
  };
  const std::vector<Row> table = {
      {0.5f, 0.1f, 1},   {0.5f, 1, 1},   {0.5f, 1.5f, 2},     {0.5f, 10, 7},      {0.5f, 100, 68},
      {0.68f, 1, 1},     {0.68f, 3, 3},  {0.68f, 100, 100},   {0.95f, 0.5f, 1},   {0.95f, 1, 2},
      {0.95f, 2.5f, 5},  {0.95f, 3, 6},  {0.95f, 100, 196},   {0.997f, 0.3f, 1},  {0.997f, 0.5f, 2},
      {0.997f, 1, 3},    {0.997f, 2, 6}, {0.997f, 2.5f, 8},   {0.997f, 10, 30},   {0.997f, 100, 297},
      {0.999999f, 1, 5}, {0.9f, 10, 17}, {0.999999f, 10, 49}, {0.997f, 1e-30f, 1}};
  for (const Row& row : table)
    EXPECT_EQ(halfOf(alongX(row.stdDev, row.coverage)), row.half) << row.coverage << " " << row.stdDev;
  EXPECT_EQ(halfOf(alongX(100, std::numeric_limits<float>::denorm_min())), 1u);
  EXPECT_EQ(halfOf(alongX(100, std::nextafter(1.f, 0.f))), 542u);
}

TEST(Gaussian, WeightsAreSamplesOfTheGaussianDividedByTheirSum) {
  for (const float s : {0.2f, 0.7f, 1.f, 2.5f, 10.f, 1000.f, 10000.f}) {
    SCOPED_TRACE(s);
    const KernelXY kernel = alongX(s);
    const auto& points = kernel.getPoints();
    const auto half = static_cast<int>(halfOf(kernel));
    ASSERT_EQ(points.size(), 2 * static_cast<std::size_t>(half) + 1);
    EXPECT_NEAR(kernel.getWeightSum(), 1, 1e-6);
    double sum = 0;
    for (int d = -half; d <= half; ++d) sum += std::exp(-0.5 * d * d / s / s);
    for (int d = -half; d <= half; ++d) {
      const auto& point = points[static_cast<std::size_t>(half + d)];
      ASSERT_EQ(point.offset.dx, d);
      ASSERT_EQ(point.offset.dy, 0);
      const double expected = std::exp(-0.5 * d * d / s / s) / sum;
      ASSERT_NEAR(point.weight, expected, 1e-7 * expected) << d;
      ASSERT_EQ(point.weight, points[static_cast<std::size_t>(half - d)].weight) << d;
    }
  }
}

TEST(Gaussian, EachKernelLiesAlongItsAxis) {
  const float stdDevs[] = {1, 2, 3};
  KernelXY flat[2];
  KernelXYZ deep[3];
  flat[0].insert({7, 7}, 7);
  separableGaussianSmoothing(1, 2, 0.95f, 0, flat[0], flat[1]);
  separableGaussianSmoothing(1, 2, 3, 0.95f, 0, deep[0], deep[1], deep[2]);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    KernelXY x, y;
    KernelXYZ expected;
    separableGaussianSmoothing(stdDevs[axis], 0, 0.95f, 0, x, y);
    for (const auto& [offset, weight] : x.getPoints()) {
      std::int32_t d[3] = {};
      d[axis] = offset.dx;
      expected.insert({d[0], d[1], d[2]}, weight);
      y.insert({d[0], d[1]}, weight);
    }
    EXPECT_EQ(deep[axis], expected);
    if (axis < 2) {
      EXPECT_EQ("0,0,1;" + flat[axis].toText(), y.toText());
    }
  }
}

TEST(Gaussian, NoDeviationIsTheIdentity) {
  for (const float zero : {0.f, -0.f}) EXPECT_EQ(alongX(zero).toText(), "0,0,1");
  // So little of a Gaussian reaches the neighbours that nothing is left of it.
  EXPECT_EQ(alongX(1e-30f).toText(), "-1,0,0;0,0,1;1,0,0");
  EXPECT_EQ(alongX(std::numeric_limits<float>::denorm_min()).toText(), "-1,0,0;0,0,1;1,0,0");
}

TEST(Gaussian, TheLimitCutsTheKernelAndTheWeightsStillSumTo1) {
  EXPECT_EQ(halfOf(alongX(1, defaultCoverage, 3)), 3u);
  EXPECT_EQ(halfOf(alongX(1, defaultCoverage, 4)), 3u);
  const KernelXY cut = alongX(10, defaultCoverage, 2);
  EXPECT_EQ(halfOf(cut), 2u);
  EXPECT_NEAR(cut.getWeightSum(), 1, 1e-6);
  for (const float large : {1e9f, std::numeric_limits<float>::max()}) {
    const KernelXY flat = alongX(large, defaultCoverage, 2);
    ASSERT_EQ(halfOf(flat), 2u);
    for (const auto& point : flat.getPoints()) EXPECT_FLOAT_EQ(point.weight, 0.2f);
  }
  // 2.96774 deviations: 11041 still fit, 11042 do not.
  EXPECT_EQ(halfOf(alongX(11041)), 32767u);
  EXPECT_EQ(halfOf(alongX(11042, defaultCoverage, 32767)), 32767u);
  EXPECT_EQ(halfOf(alongX(1, defaultCoverage, 4294967295u)), 3u);
  EXPECT_NEAR(alongX(11041).getWeightSum(), 1, 1e-6);
}

TEST(Gaussian, BadValuesAreNamedAndTheKernelsLeft) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  struct Call {
    std::vector<float> stdDevs;
    float coverage;
    std::uint32_t limit;
    const char* words;
  };
  const std::vector<Call> calls = {{{-1, 1}, 0.9f, 0, "stdDevX: the value is refused: -1 "},
                                   {{1, -0.5f}, 0.9f, 0, "stdDevY: the value is refused: -0.5 "},
                                   {{1, nan}, 0.9f, 0, "stdDevY: the value is refused: nan"},
                                   {{inf, 1}, 0.9f, 5, "stdDevX: the value is refused: inf"},
                                   {{-inf, 1}, 0.9f, 0, "stdDevX: the value is refused: -inf"},
                                   {{1, 1, -1}, 0.9f, 0, "stdDevZ: the value is refused: -1 "},
                                   {{1, 1}, 0, 0, "coverage: the value is refused: 0 "},
                                   {{0, 0}, 1, 0, "coverage: the value is refused: 1 "},
                                   {{0, 0, 0}, nan, 7, "coverage: the value is refused: nan"},
                                   {{1, 1}, -0.1f, 0, "coverage: the value is refused: -0.1 "},
                                   {{1e9f, 1}, 0.9f, 0, "stdDevX: the value is refused: 1e+09 "},
                                   {{1e9f, 1}, 0.9f, 32768, "stdDevX: the value is refused: 1e+09 "},
                                   {{1, 1, 3.4e38f}, 0.9f, 0, "stdDevZ: the value is refused: 3.4e+38 "},
                                   {{1, 11042}, 0.997f, 0, "32767"}};
  for (const Call& call : calls) {
    KernelXY flat[2];
    KernelXYZ deep[3];
    for (auto& kernel : flat) kernel.insert({1, 1}, 1);
    for (auto& kernel : deep) kernel.insert({1, 1, 1}, 1);
    const std::vector<float>& s = call.stdDevs;
    test::expectFailure({call.words}, [&] {
      if (s.size() == 2)
        separableGaussianSmoothing(s[0], s[1], call.coverage, call.limit, flat[0], flat[1]);
      else
        separableGaussianSmoothing(s[0], s[1], s[2], call.coverage, call.limit, deep[0], deep[1], deep[2]);
    });
    for (const auto& kernel : flat) EXPECT_EQ(kernel.toText(), "1,1,1");
    for (const auto& kernel : deep) EXPECT_EQ(kernel.toText(), "1,1,1,1");
  }
}

}  // namespace
}  // namespace vexo
