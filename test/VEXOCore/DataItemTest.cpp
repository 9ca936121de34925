#include "VEXOCore/DataItem.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

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

TYPED_TEST(NumberText, RefusesWhatIsNoNumberAsAWhole) {
  TypeParam value = 7;
  for (const char* text :
       {"", " ", "x", "1x", " 1", "1 ", "+", "-", "--1", "+-1", "++1", "1,5", "0x10", "1e999"}) {
    const BoolResult read = ScalarText<TypeParam>::fromText(text, value);
    EXPECT_FALSE(read) << text;
    EXPECT_NE(read.getMessage().find("'" + std::string(text) + "'"), std::string::npos);
    EXPECT_EQ(value, TypeParam(7));
  }
  EXPECT_TRUE(ScalarText<TypeParam>::fromText("+3", value));
  EXPECT_EQ(value, TypeParam(3));
}

TEST(ScalarText, RangesAreThoseOfTheType) {
  std::uint32_t natural = 0;
  std::int32_t whole = 0;
  float real = 0;
  for (const char* text : {"-1", "4294967296", "1.5"})
    EXPECT_FALSE(ScalarText<std::uint32_t>::fromText(text, natural));
  for (const char* text : {"2147483648", "-2147483649", "1.0"})
    EXPECT_FALSE(ScalarText<std::int32_t>::fromText(text, whole));
  EXPECT_FALSE(ScalarText<float>::fromText("1e39", real));
  EXPECT_TRUE(ScalarText<float>::fromText("nan", real));
  EXPECT_TRUE(std::isnan(real));
}

TEST(ScalarText, FlagsAreTrueOrFalse) {
  bool flag = false;
  EXPECT_TRUE(ScalarText<bool>::fromText("true", flag));
  for (const char* text : {"", "1", "True", "true ", "yes"})
    EXPECT_FALSE(ScalarText<bool>::fromText(text, flag));
  EXPECT_TRUE(flag);
  EXPECT_TRUE(ScalarText<bool>::fromText(ScalarText<bool>::toText(false), flag));
  EXPECT_FALSE(flag);
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

TEST(DataItem, KnowsItsOwnLeavesAndNodes) {
  Item item;
  ASSERT_EQ(item.getLeafCount(), 2u);
  ASSERT_EQ(item.getNodeCount(), 1u);
  EXPECT_EQ(item.findLeaf("Name"), &item.name);
  EXPECT_EQ(item.findLeaf("name"), nullptr);
  EXPECT_EQ(item.findLeaf("Depth"), nullptr);
  EXPECT_EQ(item.getNode(0).findLeaf("Depth"), &item.inner.depth);
  EXPECT_STREQ(item.getLeaf(0).getValueTypeName(), "unsigned");
}

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

struct BadText {
  const char* text;
  const char* named;
};
void PrintTo(const BadText& bad, std::ostream* out) {
  *out << bad.text;
}
class BadItem : public testing::TestWithParam<BadText> {};
TEST_P(BadItem, IsRefusedWithAReason) {
  Item item;
  const BoolResult read = dataItemFromText(GetParam().text, item);
  EXPECT_FALSE(read);
  EXPECT_NE(read.getMessage().find(GetParam().named), std::string::npos) << read.getMessage();
  EXPECT_EQ(item.radius.getValue(), 3u);
}
INSTANTIATE_TEST_SUITE_P(Texts, BadItem,
                         testing::Values(BadText{"Radius=-1", "Radius: '-1'"}, BadText{"Radius", "'Radius'"},
                                         BadText{"Depth=1", "the fields are Radius, Name"},
                                         BadText{"Name=x,Radius=", "Radius"}, BadText{"=1", "''"}));

}  // namespace
