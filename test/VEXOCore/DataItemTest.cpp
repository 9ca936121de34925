#include "VEXOCore/DataItem.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "tools/Calls.h"

namespace {

using namespace vexo;

template <class T>
class NumberText : public testing::Test {};
using NumberTypes = testing::Types<std::uint32_t, std::int32_t, float, double>;
TYPED_TEST_SUITE(NumberText, NumberTypes);

TYPED_TEST(NumberText, ReadsBackBitEqual) {
  using Limits = std::numeric_limits<TypeParam>;
  std::vector<TypeParam> values = {Limits::lowest(), Limits::min(), Limits::max(), TypeParam(0)};
  if (Limits::has_infinity)
    for (const auto value : {Limits::denorm_min(), Limits::infinity(), -Limits::infinity(), -TypeParam(0)})
      values.push_back(value);
  std::mt19937_64 random(3);
  while (values.size() < 5000) {
    const std::uint64_t bits = random();
    TypeParam value;
    std::memcpy(&value, &bits, sizeof value);
    if (value == value) values.push_back(value);
  }
  for (const TypeParam value : values) {
    const std::string text = ScalarText<TypeParam>::toText(value);
    TypeParam back = 1;
    ASSERT_TRUE(ScalarText<TypeParam>::fromText(text, back)) << text;
    ASSERT_EQ(std::memcmp(&back, &value, sizeof value), 0) << text;
  }
}

template <class T>
void expectRefused(std::initializer_list<const char*> texts, T value) {
  const T before = value;
  for (const std::string text : texts) {
    EXPECT_TRUE(test::has(ScalarText<T>::fromText(text, value).getMessage(), "'" + text + "'"));
    EXPECT_EQ(value, before) << text;
  }
}

TYPED_TEST(NumberText, RefusesWhatIsNoNumberAsAWhole) {
  expectRefused<TypeParam>(
      {"", " ", "x", "1x", " 1", "1 ", "+", "-", "--1", "+-1", "++1", "1,5", "0x10", "1e999"}, 7);
  TypeParam value = 7;
  EXPECT_TRUE(ScalarText<TypeParam>::fromText("+3", value));
  EXPECT_EQ(value, TypeParam(3));
}

TEST(ScalarText, RangesAreThoseOfTheType) {
  expectRefused<std::uint32_t>({"-1", "4294967296", "1.5"}, 7);
  expectRefused<std::int32_t>({"2147483648", "-2147483649", "1.0"}, 7);
  expectRefused<bool>({"", "1", "True", "true ", "yes"}, true);
  expectRefused<float>({"1e39"}, 7);
  float real = 0;
  EXPECT_TRUE(ScalarText<float>::fromText("nan", real));
  EXPECT_TRUE(std::isnan(real));
  bool flag = false;
  EXPECT_TRUE(ScalarText<bool>::fromText("true", flag) && flag);
  EXPECT_TRUE(ScalarText<bool>::fromText("false", flag) && !flag);
}

struct Item : BaseDataItemNode {
  Item() : BaseDataItemNode("Item", "an item") {
    add(radius);
    add(name);
    add(inner);
  }
  DataItemLeaf<std::uint32_t> radius{"Radius", "in pixels", 3};
  DataItemLeaf<std::string> name{"Name", "any text", "a=b"};
  struct Inner : BaseDataItemNode {
    Inner() : BaseDataItemNode("Inner", "") { add(depth); }
    DataItemLeaf<float> depth{"Depth", ""};
  } inner;
};

TEST(DataItem, TextReadsBack) {
  Item item, back;
  back.radius.setValue(9);
  back.name.setValue("");
  EXPECT_EQ(dataItemToText(item), "Radius=3,Name=a=b");
  EXPECT_TRUE(dataItemFromText(dataItemToText(item), back));
  EXPECT_EQ(back.radius.getValue(), 3u);
  EXPECT_EQ(back.name.getValue(), "a=b");
  EXPECT_TRUE(dataItemFromText("", back));
}

TEST(DataItem, BadTextIsRefusedWithAReason) {
  const std::pair<const char*, const char*> texts[] = {{"Radius=-1", "Radius: '-1'"},
                                                       {"Radius", "'Radius'"},
                                                       {"Depth=1", "the fields are Radius, Name"},
                                                       {"Name=x,Radius=", "Radius"},
                                                       {"Name=x,Name=y", "Name is given twice"},
                                                       {"=1", "''"}};
  for (const auto& [text, why] : texts) {
    Item item;
    EXPECT_TRUE(test::has(dataItemFromText(text, item).getMessage(), why));
    EXPECT_EQ(item.radius.getValue(), 3u);
  }
}

}  // namespace
