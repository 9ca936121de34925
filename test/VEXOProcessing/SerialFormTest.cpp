#include <gtest/gtest.h>

#include "VEXOProcessing/TestProcessors.h"
#include "VEXOSerialization/JsonArchive.h"

namespace {

using namespace vexo;
using namespace vexo::processor;
using namespace vexo::test;
namespace attr = vexo::test::attr;

std::string textOf(const BaseProcessor& p) {
  JsonOArchive archive;
  p.write(archive);
  return archive.getText();
}
BoolResult readFrom(BaseProcessor& p, const std::string& text) {
  JsonIArchive archive(text);
  return p.read(archive);
}
std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const auto at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(SerialForm, ReadsBackEqual) {
  const auto from = makeEveryKind({4, 3, 2, 2, 2});
  from->set<attr::InOptLimit>(INFINITY);
  const auto& in = image::hostImage(from->getStorage<attr::InImg>(), "in");
  const auto row = in.getStrides().y;
  from->set<attr::InOptMask>(
      image::Image::wrapConst(in.getRow(2), {3, 3}, image::eImageBufferType::UInt16, {-row}));
  const std::string text = textOf(*from);
  // One that is new, and one with values of its own, of which those that the text lacks must go.
  for (const bool used : {false, true}) {
    const auto to = used ? makeEveryKind() : EveryKind::createProcessor();
    if (used) to->set<attr::InOptScale>(9);
    ASSERT_EQ(readFrom(*to, text).getMessage(), "");
    EXPECT_EQ(textOf(*to), text);
    expectSameValues(*from, *to);
    EXPECT_FALSE(to->findAttribute("InOptScale")->isSet());
    for (const char* name : {"InImg", "InOptMask", "InOutImg"}) {
      const auto imageOf = [&](EveryKind& p) {
        return dynamic_cast<const BaseImageAttribute&>(*p.findAttribute(name)).getImage();
      };
      EXPECT_EQ(imageOf(*to)->getBufferType(), imageOf(*from)->getBufferType());
      EXPECT_TRUE(sameBits(image::hostImage(imageOf(*to), name), image::hostImage(imageOf(*from), name)));
    }
    executeSyncRun(to);
  }
}

TEST(SerialForm, OlderVersionsAreReadNewerOnesRefused) {
  const auto p = makeEveryKind();
  p->setThreadLimit(3);
  p->setPriority(core::ePriority::Low);
  const std::string text = textOf(*p), before = text;
  JsonIArchive older(replaced(text, "\"version\": 2", "\"version\": 1"));
  ASSERT_TRUE(p->read(older));
  EXPECT_EQ(older.getClassVersion(EveryKind::getTypeName()), 1u);
  EXPECT_EQ(p->getThreadLimit(), 3u) << "settings that the text does not hold stay";
  EXPECT_EQ(p->getPriority().getLevel(), core::ePriority::Low);
  const std::string newer = readFrom(*p, replaced(text, "\"version\": 2", "\"version\": 45")).getMessage();
  EXPECT_TRUE(has(newer, "45") && has(newer, " 2"));
  EXPECT_EQ(textOf(*p), before);
}

TEST(SerialForm, IllTypedTextIsRefused) {
  const auto p = makeEveryKind();
  const std::string text = textOf(*p);
  const std::pair<const char*, const char*> changes[] = {
      {"\"version\": 2", "\"version\": \"2\""},
      {"\"version\": 2", "\"version\": -1"},
      {"\"version\": 2", "\"verzion\": 2"},
      {"vexo::test::EveryKind", "vexo::test::Steps1"},
      {"\"version\": 2", "\"version\": 0"},
      {"\"InFlag\": true", "\"InFlak\": true"},
      {"\"InFlag\": true", "\"InFlag\": 1"},
      {"\"InCount\": 4294967295", "\"InCount\": 4294967296"},
      {"\"InCount\": 4294967295", "\"InCount\": 13"},
      {"\"InOffset\": -2147483648", "\"InOffset\": -2147483649"},
      {"\"InFactor\": 0.5", "\"InFactor\": null"},
      {"\"InFactor\": 0.5", "\"InFactor\": 1e50"},
      {"\"InFactor\": 0.5", "\"InFactor\": {}"},
      {"\"InShade\": \"bright\"", "\"InShade\": \"pink\""},
      {"\"InShade\": \"bright\"", "\"InShade\": 2.5"},
      {"Least=0.3", "Leest=0.3"},
      {"-2,1,0.1", "-2,1"},
      {"\"int16\"", "\"int17\""},
      {"\"x\": 5", "\"x\": 0"},
      {"\"x\": 5", "\"x\": 6"},
      {"\"x\": 5", "\"x\": -5"},
      {"\"x\": 5", "\"x\": 9223372036854775807"},
      {"\"x\": 5", "\"x\": 4611686018427387909"},  // times 4 wraps around to what fits
      {"\"y\": 4", "\"z\": 4"},
      {"\"samples\": \"", "\"samples\": \"*"},
      {"\"samples\": \"", "\"samples\": \"AAAA"}};
  for (const auto& [from, to] : changes) {
    EXPECT_THROW(readFrom(*p, replaced(text, from, to)), UnHandleException) << to;
    EXPECT_EQ(textOf(*p), text) << to;
  }
  for (const char* foreign : {"{}", "{\"vexo::test::EveryKind\": 3}", "{\"vexo::test::EveryKind\": {}}"}) {
    EXPECT_THROW(readFrom(*p, foreign), UnHandleException) << foreign;
    EXPECT_EQ(textOf(*p), text) << foreign;
  }
}

}  // namespace
