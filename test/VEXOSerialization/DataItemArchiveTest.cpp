#include <gtest/gtest.h>

#include <limits>

#include "VEXOCore/BaseException.h"
#include "VEXOSerialization/JsonArchive.h"
#include "VEXOSerialization/SerializationMessages.h"

namespace {

using namespace vexo;

/// A type that archives know only as text.
struct EvenLeaf : BaseDataItemLeaf {
  using BaseDataItemLeaf::BaseDataItemLeaf;
  const char* getValueTypeName() const override { return "even"; }
  std::string getText() const override { return std::to_string(value); }
  BoolResult setText(const std::string& text) override {
    const int parsed = std::atoi(text.c_str());
    if (parsed % 2 != 0) return BoolResult::failure("'" + text + "' is odd");
    value = parsed;
    return true;
  }
  int value = 0;
};

struct Inner : BaseDataItemNode {
  Inner() : BaseDataItemNode("Inner", "") {
    add(real);
    add(even);
  }
  DataItemLeaf<float> real{"Real", ""};
  EvenLeaf even{"Even", ""};
};

struct Item : BaseDataItemNode {
  Item() : BaseDataItemNode("Item", "") {
    add(flag);
    add(count);
    add(offset);
    add(wide);
    add(text);
    add(inner);
  }
  std::uint32_t getVersion() const override { return version; }
  std::string all() const { return dataItemToText(*this) + ";" + dataItemToText(inner); }

  std::uint32_t version = 2;
  DataItemLeaf<bool> flag{"Flag", "", true};
  DataItemLeaf<std::uint32_t> count{"Count", "", std::numeric_limits<std::uint32_t>::max()};
  DataItemLeaf<std::int32_t> offset{"Offset", "", std::numeric_limits<std::int32_t>::min()};
  DataItemLeaf<double> wide{"Wide", "", -std::numeric_limits<double>::infinity()};
  DataItemLeaf<std::string> text{"Text", "", "a,\"b\""};
  Inner inner;
};

std::string textOf(const Item& item) {
  JsonOArchive out;
  writeDataItem(out, item);
  return out.getText();
}

std::string readingFailure(const std::string& text, Item& item) {
  JsonIArchive in(text);
  try {
    readDataItem(in, item);
  } catch (const UnHandleException& failure) {
    EXPECT_TRUE(in.has("Item")) << "a section was left open";
    return failure.getMessage();
  }
  return "";
}

TEST(DataItemArchive, ReadsBack) {
  Item item;
  item.inner.real.setValue(0.1f);
  item.inner.even.value = 6;
  Item back;
  back.flag.setValue(false);
  back.text.setValue("");
  back.count.setValue(0);
  ASSERT_EQ(readingFailure(textOf(item), back), "");
  EXPECT_EQ(back.all(), item.all());
}

TEST(DataItemArchive, NumbersAndFlagsAreNoTexts) {
  JsonIArchive in(textOf(Item()));
  in.openSection("Item");
  bool flag = false;
  std::uint32_t count = 0, version = 0;
  std::int32_t offset = 0;
  in.read("Flag", flag);
  in.read("Count", count);
  in.read("Offset", offset);
  in.read("version", version);
  EXPECT_EQ(std::make_tuple(flag, count, offset, version), std::make_tuple(true, ~0u, INT32_MIN, 2u));
  in.openSection("Inner");
  float real = 1;
  std::string even;
  in.read("Real", real);
  in.read("Even", even);
  EXPECT_EQ(real, 0.f);
  EXPECT_EQ(even, "0");
}

/// Replaces `what` in the archive; the failure must name `named` and leave the item as it was.
struct Damage {
  const char* what;
  const char* by;
  const char* named;
};
void PrintTo(const Damage& damage, std::ostream* out) {
  *out << damage.what << " -> " << damage.by;
}

class DamagedDataItem : public testing::TestWithParam<Damage> {};

TEST_P(DamagedDataItem, IsLeftAsItWas) {
  Item stored;
  stored.flag.setValue(false);
  stored.count.setValue(1);
  stored.text.setValue("stored");
  stored.inner.real.setValue(2);
  std::string text = textOf(stored);
  const auto found = text.find(GetParam().what);
  ASSERT_NE(found, std::string::npos) << text;
  text.replace(found, std::string(GetParam().what).size(), GetParam().by);
  Item item;
  const std::string before = item.all();
  EXPECT_NE(readingFailure(text, item).find(GetParam().named), std::string::npos);
  EXPECT_EQ(item.all(), before);
}

INSTANTIATE_TEST_SUITE_P(Damages, DamagedDataItem,
                         testing::Values(Damage{"\"Even\": \"0\"", "\"Even\": \"3\"", "Even"},
                                         Damage{"\"Even\"", "\"Odd\"", "Even"},
                                         Damage{"\"Real\": 2.0", "\"Real\": true", "Real"},
                                         Damage{"\"Count\": 1", "\"Count\": -1", "Count"},
                                         Damage{"\"Inner\"", "\"Outer\"", "Inner"},
                                         Damage{"\"version\"", "\"Version\"", "version"},
                                         Damage{"\"version\": 2", "\"version\": 3", "Item: version 3"},
                                         Damage{"\"version\": 1", "\"version\": 2", "Inner: version 2"}));

TEST(DataItemArchive, OlderVersionsAreRead) {
  Item stored, item;
  stored.version = 1;
  stored.offset.setValue(5);
  EXPECT_EQ(readingFailure(textOf(stored), item), "");
  EXPECT_EQ(item.offset.getValue(), 5);
}

TEST(DataItemArchive, LeavesOfOneKeyAreRefused) {
  struct Twice : BaseDataItemNode {
    Twice() : BaseDataItemNode("Twice", "") {
      add(a);
      add(b);
    }
    DataItemLeaf<bool> a{"Same", ""}, b{"Same", ""};
  } item;
  JsonOArchive out;
  EXPECT_THROW(writeDataItem(out, item), UnHandleException);
}

TEST(SerializationMessages, SayWhichVersionIsTooNew) {
  EXPECT_EQ(static_cast<unsigned>(eSerializationMessage::NewerVersion), 25u);
  EXPECT_EQ(formatMessage(eSerializationMessage::NewerVersion, "Item", 3, 2),
            "Item: version 3 of the archive is greater than the version 2 that this library reads");
}

}  // namespace
