#include <gtest/gtest.h>

#include <limits>

#include "VEXOSerialization/JsonArchive.h"
#include "tools/Calls.h"

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
    add(flag), add(count), add(offset), add(wide), add(text), add(inner);
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
  const auto failure = test::failureOf<UnHandleException>([&] { readDataItem(in, item); });
  EXPECT_TRUE(in.has("Item")) << "a section was left open";
  return failure;
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

// Numbers and flags that were written as texts would not be found, nor read.
TEST(DataItemArchive, DamagedItemsAreLeftAsTheyWere) {
  Item stored;
  stored.flag.setValue(false);
  stored.count.setValue(1);
  stored.text.setValue("stored");
  stored.inner.real.setValue(2);
  const struct {
    std::string what, by, named;
  } damages[] = {{"\"Even\": \"0\"", "\"Even\": \"3\"", "Even"},
                 {"\"Even\"", "\"Odd\"", "Even"},
                 {"\"Flag\": false", "\"Flag\": \"false\"", "Flag"},
                 {"\"Real\": 2.0", "\"Real\": true", "Real"},
                 {"\"Count\": 1", "\"Count\": -1", "Count"},
                 {"\"Inner\"", "\"Outer\"", "Inner"},
                 {"\"version\"", "\"Version\"", "version"},
                 {"\"version\": 2", "\"version\": 3", "Item: version 3"},
                 {"\"version\": 1", "\"version\": 2", "Inner: version 2"}};
  for (const auto& [what, by, named] : damages) {
    std::string text = textOf(stored);
    const auto found = text.find(what);
    ASSERT_NE(found, std::string::npos) << what << " in " << text;
    Item item;
    const std::string before = item.all();
    EXPECT_TRUE(test::has(readingFailure(text.replace(found, what.size(), by), item), named));
    EXPECT_EQ(item.all(), before) << by;
  }
}

TEST(DataItemArchive, OlderVersionsAreRead) {
  Item stored, item;
  stored.version = 1;
  stored.offset.setValue(5);
  EXPECT_EQ(readingFailure(textOf(stored), item), "");
  EXPECT_EQ(item.offset.getValue(), 5);
}

}  // namespace
