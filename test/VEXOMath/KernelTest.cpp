#include "VEXOMath/Kernel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tools/Calls.h"

namespace {

using namespace vexo;

constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();

KernelXYZ extremes() {
  KernelXYZ kernel;
  kernel.insert({least, 0, 3}, -0.1f);
  kernel.insert({most, -2, 1}, std::numeric_limits<float>::denorm_min());
  kernel.insert({most, -2, 1}, std::numeric_limits<float>::max());
  kernel.insert({0, 0, 0}, std::nanf(""));
  kernel.insert({0, 0, 0}, -std::numeric_limits<float>::infinity());
  return kernel;
}

TEST(Kernel, ReachesAsFarAsItsOffsets) {
  const auto extent = extremes().getExtent();
  const std::size_t reaches[3][2] = {{2147483648u, 2147483647u}, {2, 0}, {0, 3}};
  for (int axis = 0; axis < 3; ++axis) {
    EXPECT_EQ(extent[axis].before, reaches[axis][0]) << axis;
    EXPECT_EQ(extent[axis].after, reaches[axis][1]) << axis;
  }
  for (const KernelReach& reach : KernelXY().getExtent()) EXPECT_EQ(reach.before + reach.after, 0u);
}

TEST(Kernel, WeightsAreSummedInDouble) {
  KernelXY kernel;
  EXPECT_EQ(kernel.getWeightSum(), 0);
  kernel.insert({0, 0}, 16777216.f);
  for (int i = 0; i < 3; ++i) kernel.insert({i, 0}, 1.f);
  EXPECT_EQ(kernel.getWeightSum(), 16777219.);
}

TEST(Kernel, TextReadsBackEqual) {
  for (const KernelXYZ& kernel : {KernelXYZ(), extremes()}) {
    KernelXYZ back;
    back.insert({1, 2, 3}, 4);
    EXPECT_NE(back, kernel);
    const BoolResult read = KernelXYZ::fromText(kernel.toText(), back);
    EXPECT_TRUE(read) << read.getMessage();
    EXPECT_EQ(back, kernel);
  }
}

TEST(Kernel, EqualityComparesEverything) {
  const char* const texts[] = {"",        "1,2,3",       "0,2,3",       "1,0,3",      "1,2,0",
                               "1,2,nan", "1,2,3;1,2,3", "1,2,3;0,0,0", "0,0,0;1,2,3"};
  std::vector<KernelXY> kernels(std::size(texts));
  for (std::size_t i = 0; i < kernels.size(); ++i) ASSERT_TRUE(KernelXY::fromText(texts[i], kernels[i]));
  for (std::size_t i = 0; i < kernels.size(); ++i)
    for (std::size_t k = 0; k < kernels.size(); ++k)
      EXPECT_EQ(kernels[i] == kernels[k], i == k) << texts[i] << " and " << texts[k];
}

TEST(Kernel, LayoutIsIgnored) {
  for (const char* text : {"1,-2,0.5;3,4,5", "1,-2,0.5\n3,4,5\n", " 1 ,\t-2, 0.5 ; 3,4,5 ; ",
                           ";;\r\n1,-2,0.5\r\n \r\n;3,4,5;", "1,-2,.5;3,+4,5e0"}) {
    KernelXY kernel;
    EXPECT_EQ(KernelXY::fromText(text, kernel).getMessage(), "");
    EXPECT_EQ(kernel.toText(), "1,-2,0.5;3,4,5");
  }
}

TEST(Kernel, BadTextNamesThePointAndLeavesTheKernel) {
  const std::pair<const char*, const char*> texts[] = {
      {"0,0,1;1,2", "point 2 of the kernel, '1,2'"},
      {";;0,0,1;;\n1,2,3,4", "point 2 of the kernel, '1,2,3,4'"},
      {"1,,3", "point 1"},
      {",,", "point 1"},
      {"1,2,3,", "point 1"},
      {"1 0,2,3", "'1 0'"},
      {"1.5,2,3", "'1.5'"},
      {"2147483648,0,1", "'2147483648'"},
      {"0,-2147483649,1", "'-2147483649'"},
      {"0,0,x", "'x'"},
      {"0,0,1e39", "'1e39'"}};
  for (const auto& [text, why] : texts) {
    KernelXY kernel;
    kernel.insert({1, 1}, 1);
    EXPECT_TRUE(test::has(KernelXY::fromText(text, kernel).getMessage(), why));
    EXPECT_EQ(kernel.toText(), "1,1,1");
  }
}

}  // namespace
