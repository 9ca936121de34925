#include <gtest/gtest.h>

#include "VEXOProcessing/TestProcessors.h"

namespace {

using namespace vexo;
using namespace vexo::processor;
using namespace vexo::test;
namespace attr = vexo::test::attr;

struct NameCase {
  const char* name;
  eAttributeDirection direction;
  bool optional, work;
};
class AttributeName : public testing::TestWithParam<NameCase> {};
constexpr auto in = eAttributeDirection::In, out = eAttributeDirection::Out,
               inOut = eAttributeDirection::InOut;
INSTANTIATE_TEST_SUITE_P(
    Names, AttributeName,
    testing::Values(NameCase{"InImg", in, false, false}, NameCase{"InOptMask", in, true, false},
                    NameCase{"OutImg", out, false, false}, NameCase{"OutOptImg", out, true, false},
                    NameCase{"InOutMaxVal", inOut, false, false}, NameCase{"InOutOptImg", inOut, true, false},
                    NameCase{"OutWk1Img", out, false, true}, NameCase{"OutOptWk1RealGpuImg", out, true, true},
                    NameCase{"InWk1Img", in, false, false}, NameCase{"InOutWk1Img", inOut, false, false},
                    NameCase{"In", in, false, false}, NameCase{"Out", out, false, false},
                    // "Out" and "Opt" are prefixes only where the next word begins.
                    NameCase{"InOutlierCount", in, false, false},
                    NameCase{"InOpticalDensity", in, false, false}));

TEST_P(AttributeName, TellsWhatTheAttributeIs) {
  const AttributeInfo info("some::space::" + std::string(GetParam().name), "tip");
  EXPECT_EQ(info.name, GetParam().name);
  EXPECT_EQ(info.direction, GetParam().direction);
  EXPECT_EQ(info.optional, GetParam().optional);
  EXPECT_EQ(info.isWorkImage(), GetParam().work);
}

TEST(Attribute, DescribesItself) {
  const auto p = makeReady<EveryKind>();
  const auto& all = p->getAttributes();
  ASSERT_EQ(all.size(), 21u);
  const auto typeOf = [&](const char* name) { return p->findAttribute(name)->getValueTypeName(); };
  EXPECT_EQ(all.front()->getName(), "InFlag");
  EXPECT_EQ(all.back()->getName(), "OutOptWk1Img");
  EXPECT_EQ(typeOf("InFlag"), "bool");
  EXPECT_EQ(typeOf("InCount"), "unsigned");
  EXPECT_EQ(typeOf("InOffset"), "integer");
  EXPECT_EQ(typeOf("InFactor"), "float");
  EXPECT_EQ(typeOf("InPrecise"), "double");
  EXPECT_EQ(typeOf("InShade"), "dark|medium|bright");
  EXPECT_EQ(typeOf("InRange"), "Range");
  EXPECT_EQ(typeOf("InKnl"), "KernelXY");
  EXPECT_EQ(typeOf("InBorder"), "Border2dPolicy");
  EXPECT_EQ(typeOf("InImg"), "image");
  EXPECT_EQ(p->findAttribute("InNothing"), nullptr);
  EXPECT_TRUE(p->findAttribute("InOutCounter")->isInput() && p->findAttribute("InOutCounter")->isOutput());
  EXPECT_FALSE(p->findAttribute("OutMaximum")->isInput());
  for (const auto& attribute : all) {
    EXPECT_FALSE(attribute->isSet()) << attribute->getName();
    const bool standard = attribute->getName() == "InOptScale" || attribute->getName() == "InBorder";
    EXPECT_EQ(attribute->hasDefault(), standard) << attribute->getName();
    EXPECT_EQ(attribute->getText().empty(), !standard) << attribute->getName();
  }
}

TEST(Attribute, DefaultStandsInUntilAValueIsSet) {
  const auto p = makeReady<EveryKind>();
  EXPECT_EQ(p->getStorage<attr::InOptScale>(), 3u);
  EXPECT_EQ(p->findAttribute("InOptScale")->getText(), "3");
  p->set<attr::InOptScale>(8);
  EXPECT_EQ(p->getStorage<attr::InOptScale>(), 8u);
  p->findAttribute("InOptScale")->clear();
  EXPECT_EQ(p->getStorage<attr::InOptScale>(), 3u);
  EXPECT_EQ(p->getStorage<attr::InImg>(), nullptr);
  EXPECT_TRUE(has(messageOf([&] { p->getStorage<attr::InOptLimit>(); }), "InOptLimit"));
}

TEST(Attribute, RefusedValuesLeaveTheOldOne) {
  const auto p = makeReady<EveryKind>();
  p->set<attr::InCount>(4);
  const std::string refusal = messageOf([&] { p->set<attr::InCount>(13); });
  EXPECT_TRUE(has(refusal, "InCount") && has(refusal, "13 brings no luck")) << refusal;
  EXPECT_TRUE(has(messageOf([&] { p->findAttribute("InCount")->setText("13"); }), "InCount"));
  EXPECT_EQ(p->getStorage<attr::InCount>(), 4u);

  const auto image = makeRandom({2, 2}, image::eImageBufferType::Int8, 1);
  p->set<attr::InImg>(image);
  EXPECT_TRUE(has(messageOf([&] { p->set<attr::InImg>({}); }), "InImg"));
  EXPECT_EQ(p->getStorage<attr::InImg>(), image);
  p->set<attr::InBorder>(image::constantBorder2d(2));
  EXPECT_TRUE(has(messageOf([&] { p->set<attr::InBorder>({}); }), "InBorder"));
  EXPECT_EQ(p->getStorage<attr::InBorder>()->getConstant(), 2);

  const auto half = makeReady<WindowSumYLvl1>();
  half->set<attr::InHalfKnlSizeX>(32767);
  const std::string tooLarge = messageOf([&] { half->set<attr::InHalfKnlSizeX>(32768); });
  EXPECT_TRUE(has(tooLarge, "InHalfKnlSizeX") && has(tooLarge, "32768")) << tooLarge;
  EXPECT_EQ(half->getStorage<attr::InHalfKnlSizeX>(), 32767u);
}

TEST(Attribute, OnlyThoseOfTheProcessorCanBeSet) {
  const auto p = makeReady<EveryKind>();
  const std::string wrong = messageOf([&] { p->set<attr::InHalfKnlSizeX>(1); });
  EXPECT_TRUE(has(wrong, "EveryKind") && has(wrong, "InHalfKnlSizeX")) << wrong;
  messageOf([&] { p->getStorage<attr::InHalfKnlSizeX>(); });
  const auto empty = EveryKind::createProcessor();
  EXPECT_TRUE(empty->getAttributes().empty());
  EXPECT_TRUE(has(messageOf([&] { empty->set<attr::InCount>(1); }), "not initialised"));
  EXPECT_TRUE(has(messageOf([&] { executeSyncRun(empty); }), "not initialised"));
}

TEST(Attribute, CannotBeSetWhileRunning) {
  const auto p = makeReady<Steps1>();
  std::atomic<bool> begun{false}, go{false};
  p->step = [&](std::size_t) {
    return pieces(1, [&](std::size_t) {
      begun = true;
      while (!go) std::this_thread::yield();
    });
  };
  ASSERT_TRUE(p->run(core::eSynchroType::Asynchronous));
  while (!begun) std::this_thread::yield();
  const auto image = makeRandom({2, 2}, image::eImageBufferType::Int8, 1);
  EXPECT_TRUE(has(messageOf([&] { p->set<attr::InOptMask>(image); }), "running"));
  EXPECT_TRUE(has(messageOf([&] { p->init(); }), "running"));
  EXPECT_TRUE(has(messageOf([&] { p->copy(*makeReady<Steps1>()); }), "running"));
  EXPECT_FALSE(p->run(core::eSynchroType::Synchronous)) << "one run at a time";
  go = true;
  p->wait();
  EXPECT_TRUE(p->getResult());
  EXPECT_EQ(p->getStorage<attr::InOptMask>(), nullptr);
  EXPECT_NO_THROW(p->set<attr::InOptMask>(image));
}

TEST(AttributeText, ReadsBackEqual) {
  const auto from = makeEveryKind(), to = makeReady<EveryKind>();
  from->set<attr::InBorder>(image::constantBorder2d(-0.1));
  from->set<attr::InOptLimit>(1e-38f);
  int compared = 0;
  for (const auto& attribute : from->getAttributes()) {
    const auto twin = to->findAttribute(attribute->getName());
    if (dynamic_cast<BaseImageAttribute*>(attribute.get())) {
      EXPECT_EQ(attribute->getText(), "");
      EXPECT_FALSE(twin->setText("x.tif"));
      EXPECT_FALSE(twin->isSet());
      continue;
    }
    if (!attribute->isSet()) continue;
    ASSERT_TRUE(twin->setText(attribute->getText())) << attribute->getName();
    EXPECT_EQ(twin->getText(), attribute->getText()) << attribute->getName();
    ++compared;
  }
  EXPECT_EQ(compared, 12);
  EXPECT_EQ(to->getStorage<attr::InOffset>(), -2147483647 - 1);
  EXPECT_EQ(to->getStorage<attr::InPrecise>(), 1.0 / 3);
  EXPECT_EQ(to->getStorage<attr::InOptLimit>(), 1e-38f);
  EXPECT_EQ(to->getStorage<attr::InLabel>(), from->getStorage<attr::InLabel>());
  EXPECT_EQ(to->getStorage<attr::InShade>(), eShade::Bright);
  EXPECT_TRUE(*to->getStorage<attr::InKnl>() == *from->getStorage<attr::InKnl>());
  EXPECT_TRUE(*to->getStorage<attr::InBorder>() == *from->getStorage<attr::InBorder>());
  EXPECT_EQ(to->getStorage<attr::InRange>()->least.getValue(), 0.3f);
  EXPECT_FALSE(to->getStorage<attr::InRange>()->closed.getValue());
}

TEST(AttributeText, RefusedTextLeavesTheValue) {
  const auto p = makeEveryKind();
  const std::pair<const char*, std::vector<const char*>> wrong[] = {
      {"InFlag", {"", "1", "True"}},
      {"InCount", {"", "-1", "4294967296", "7 ", "1e3"}},
      {"InOffset", {"2147483648", "1.5"}},
      {"InFactor", {"", "half", "1e99", "0x"}},
      {"InPrecise", {"1,5"}},
      {"InShade", {"", "Dark", "dark|medium", "-1"}},
      {"InRange", {"Lest=1", "1,2,3,4", "Least=x"}},
      {"InKnl", {"1,2", "1,2,3,4", "a"}},
      {"InBorder", {"", "none"}}};
  for (const auto& [name, texts] : wrong)
    for (const char* text : texts) {
      const auto attribute = p->findAttribute(name);
      const std::string before = attribute->getText();
      const BoolResult result = attribute->setText(text);
      EXPECT_FALSE(result) << name << ": " << text;
      EXPECT_FALSE(result.getMessage().empty()) << name << ": " << text;
      EXPECT_EQ(attribute->getText(), before) << name << ": " << text;
    }
  EXPECT_TRUE(has(p->findAttribute("InShade")->setText("grey").getMessage(), "dark|medium|bright"));
  ASSERT_TRUE(p->findAttribute("InShade")->setText("17"));
  EXPECT_EQ(static_cast<int>(p->getStorage<attr::InShade>()), 17);
  EXPECT_EQ(p->findAttribute("InShade")->getText(), "17");
}

// --- Rules
// ----------------------------------------------------------------------------------------------------------

/// Holds or fails with its name, and counts how often it is asked.
RulePtr fixed(bool value, const char* name, int* asked = nullptr) {
  return makeRule([=] {
    if (asked) ++*asked;
    return value ? BoolResult(true) : BoolResult::failure(name);
  });
}

TEST(Rule, TruthTables) {
  for (const bool a : {false, true})
    for (const bool b : {false, true}) {
      const BoolResult both = (fixed(a, "A") && fixed(b, "B"))->check();
      EXPECT_EQ(both.isOk(), a && b);
      EXPECT_EQ(both.getMessage(), a && b ? "" : a ? "B" : "A");
      const BoolResult either = (fixed(a, "A") || fixed(b, "B"))->check();
      EXPECT_EQ(either.isOk(), a || b);
      if (!either) {
        EXPECT_TRUE(has(either.getMessage(), "A") && has(either.getMessage(), "B"));
      }
      for (const bool condition : {false, true}) {
        const BoolResult chosen = If(fixed(condition, "C"), fixed(a, "A"), fixed(b, "B"))->check();
        EXPECT_EQ(chosen.isOk(), condition ? a : b);
        EXPECT_EQ(chosen.getMessage(), chosen ? "" : condition ? "A" : "B");
      }
      EXPECT_EQ(If(fixed(a, "A"), fixed(b, "B"))->check().isOk(), !a || b);
    }
  EXPECT_TRUE(none()->check());
  int asked = 0;
  (fixed(false, "A") && fixed(true, "B", &asked))->check();
  EXPECT_EQ(asked, 0) << "what guards the second rule must come first";
  If(fixed(false, "C"), fixed(true, "A", &asked))->check();
  EXPECT_EQ(asked, 0);
}

TEST(Rule, OptionalIsSet) {
  auto p = makeReady<EveryKind>();
  const RuleOptionalIsSet limit(p->accessAttribute<attr::InOptLimit>()),
      scale(p->accessAttribute<attr::InOptScale>());
  EXPECT_TRUE(has(limit.check().getMessage(), "InOptLimit"));
  EXPECT_FALSE(scale.check()) << "a default is no value that was set";
  p->set<attr::InOptLimit>(0);
  EXPECT_TRUE(limit.check());
  p.reset();
  EXPECT_FALSE(limit.check());
}

TEST(Rule, OfConcreteClassesCompose) {
  const auto p = makeReady<EveryKind>();
  const auto limit = boost::make_shared<RuleOptionalIsSet>(p->accessAttribute<attr::InOptLimit>());
  const auto scale = boost::make_shared<RuleOptionalIsSet>(p->accessAttribute<attr::InOptScale>());
  p->set<attr::InOptLimit>(0);
  const RulePtr both = limit && scale, one = limit || scale;
  EXPECT_FALSE(both->check());
  EXPECT_TRUE(one->check());
}

TEST(Rule, ImagesMatchInSizeAndType) {
  using image::ImageGeometry;
  const auto p = makeReady<EveryKind>();
  const auto size =
      imaproc::matchSize(p->accessAttribute<attr::InImg>(), p->accessAttribute<attr::OutRealImg>());
  const auto type =
      imaproc::matchSizeAndType(p->accessAttribute<attr::InImg>(), p->accessAttribute<attr::OutRealImg>());
  EXPECT_TRUE(size->check());
  const ImageGeometry g{6, 5, 4, 3, 2};
  p->set<attr::InImg>(image::Image::create(g, image::eImageBufferType::Int16));
  EXPECT_TRUE(size->check() && type->check()) << "a missing output fits";
  p->set<attr::OutRealImg>(image::Image::create(g, image::eImageBufferType::UInt16));
  EXPECT_TRUE(size->check());
  EXPECT_TRUE(has(type->check().getMessage(), "int16") && has(type->check().getMessage(), "uint16"));
  for (const ImageGeometry& other :
       {ImageGeometry{7, 5, 4, 3, 2}, {6, 6, 4, 3, 2}, {6, 5, 5, 3, 2}, {6, 5, 4, 4, 2}, {6, 5, 4, 3, 1}}) {
    p->set<attr::OutRealImg>(image::Image::create(other, image::eImageBufferType::Int16));
    for (const auto& rule : {size, type}) {
      const std::string why = rule->check().getMessage();
      EXPECT_TRUE(has(why, "InImg") && has(why, "OutRealImg") && has(why, toString(g)) &&
                  has(why, toString(other)))
          << why;
    }
  }
}

}  // namespace
