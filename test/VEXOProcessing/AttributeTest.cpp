#include <gtest/gtest.h>

#include "VEXOProcessing/TestProcessors.h"

namespace {

using namespace vexo;
using namespace vexo::processor;
using namespace vexo::test;
namespace attr = vexo::test::attr;

TEST(Attribute, NameTellsWhatItIs) {
  constexpr auto in = eAttributeDirection::In, out = eAttributeDirection::Out,
                 inOut = eAttributeDirection::InOut;
  const struct {
    const char* name;
    eAttributeDirection direction;
    bool optional, work;
  } cases[] = {{"InImg", in, false, false},
               {"InOptMask", in, true, false},
               {"OutOptImg", out, true, false},
               {"InOutMaxVal", inOut, false, false},
               {"InOutOptImg", inOut, true, false},
               {"OutWk1Img", out, false, true},
               {"OutOptWk1RealGpuImg", out, true, true},
               {"InWk1Img", in, false, false},
               {"InOutWk1Img", inOut, false, false},
               {"In", in, false, false},
               {"Out", out, false, false},
               // "Out" and "Opt" are prefixes only where the next word begins.
               {"InOutlierCount", in, false, false},
               {"InOpticalDensity", in, false, false}};
  for (const auto& c : cases) {
    const AttributeInfo info("some::space::" + std::string(c.name), "tip");
    EXPECT_EQ(info.name, c.name);
    EXPECT_EQ(info.direction, c.direction) << c.name;
    EXPECT_EQ(info.optional, c.optional) << c.name;
    EXPECT_EQ(info.isWorkImage(), c.work) << c.name;
  }
}

TEST(Attribute, DefaultStandsInUntilAValueIsSet) {
  const auto p = makeReady<EveryKind>();
  EXPECT_EQ(p->getAttributes().size(), 21u);
  for (const auto& attribute : p->getAttributes()) {
    EXPECT_FALSE(attribute->isSet()) << attribute->getName();
    const bool standard = attribute->getName() == "InOptScale" || attribute->getName() == "InBorder";
    EXPECT_EQ(attribute->hasDefault(), standard) << attribute->getName();
    EXPECT_EQ(attribute->getText().empty(), !standard) << attribute->getName();
  }
  EXPECT_EQ(p->getStorage<attr::InOptScale>(), 3u);
  EXPECT_EQ(p->findAttribute("InOptScale")->getText(), "3");
  p->set<attr::InOptScale>(8);
  EXPECT_EQ(p->getStorage<attr::InOptScale>(), 8u);
  p->findAttribute("InOptScale")->clear();
  EXPECT_EQ(p->getStorage<attr::InOptScale>(), 3u);
  EXPECT_EQ(p->getStorage<attr::InImg>(), nullptr);
  expectFailure({"InOptLimit"}, [&] { p->getStorage<attr::InOptLimit>(); });
}

TEST(Attribute, RefusedValuesLeaveTheOldOne) {
  const auto p = makeReady<EveryKind>();
  p->set<attr::InCount>(4);
  expectFailure({"InCount", "13 brings no luck"}, [&] { p->set<attr::InCount>(13); });
  expectFailure({"InCount"}, [&] { p->findAttribute("InCount")->setText("13"); });
  EXPECT_EQ(p->getStorage<attr::InCount>(), 4u);

  const auto image = rangeImage({2, 2}, image::eImageBufferType::Int8, 0, 9, 1);
  p->set<attr::InImg>(image);
  expectFailure({"InImg"}, [&] { p->set<attr::InImg>({}); });
  EXPECT_EQ(p->getStorage<attr::InImg>(), image);
  p->set<attr::InBorder>(image::constantBorder2d(2));
  expectFailure({"InBorder"}, [&] { p->set<attr::InBorder>({}); });
  EXPECT_EQ(p->getStorage<attr::InBorder>()->getConstant(), 2);

  const auto half = makeReady<WindowSumLvl1>();
  half->set<attr::InHalfKnlSizeX>(32767);
  expectFailure({"InHalfKnlSizeX", "32768"}, [&] { half->set<attr::InHalfKnlSizeX>(32768); });
  EXPECT_EQ(half->getStorage<attr::InHalfKnlSizeX>(), 32767u);
}

TEST(Attribute, OnlyThoseOfTheProcessorCanBeSet) {
  const auto p = makeReady<EveryKind>();
  expectFailure({"EveryKind", "InHalfKnlSizeX"}, [&] { p->set<attr::InHalfKnlSizeX>(1); });
  expectFailure({}, [&] { p->getStorage<attr::InHalfKnlSizeX>(); });
  const auto empty = EveryKind::createProcessor();
  EXPECT_TRUE(empty->getAttributes().empty());
  expectFailure({"not initialised"}, [&] { empty->set<attr::InCount>(1); });
  expectFailure({"not initialised"}, [&] { executeSyncRun(empty); });
}

TEST(Attribute, CannotBeSetWhileRunning) {
  const auto p = makeReady<Steps1>();
  std::atomic<bool> begun{false}, go{false};
  p->step = [&](std::size_t) {
    begun = true;
    EXPECT_TRUE(eventually([&] { return go.load(); }));
    return nullptr;
  };
  ASSERT_TRUE(p->run(core::eSynchroType::Asynchronous));
  ASSERT_TRUE(eventually([&] { return begun.load(); }));
  const auto image = rangeImage({2, 2}, image::eImageBufferType::Int8, 0, 9, 1);
  expectFailure({"running"}, [&] { p->set<attr::InOptMask>(image); });
  expectFailure({"running"}, [&] { p->init(); });
  expectFailure({"running"}, [&] { p->copy(*makeReady<Steps1>()); });
  EXPECT_FALSE(p->run(core::eSynchroType::Synchronous)) << "one run at a time";
  go = true;
  p->wait();
  EXPECT_TRUE(p->getResult());
  EXPECT_EQ(p->getStorage<attr::InOptMask>(), nullptr);
  EXPECT_NO_THROW(p->set<attr::InOptMask>(image));
}

TEST(AttributeText, ReadsBackEqual) {
  const auto from = makeEveryKind(), to = makeReady<EveryKind>();
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
  expectSameValues(*from, *to);
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
      EXPECT_NE(result.getMessage(), "") << name << ": " << text;
      EXPECT_EQ(attribute->getText(), before) << name << ": " << text;
    }
  EXPECT_TRUE(has(p->findAttribute("InShade")->setText("grey").getMessage(), "dark|medium|bright"));
  ASSERT_TRUE(p->findAttribute("InShade")->setText("17"));
  EXPECT_EQ(static_cast<int>(p->getStorage<attr::InShade>()), 17);
  EXPECT_EQ(p->findAttribute("InShade")->getText(), "17");
}

/// Holds or fails with its name, and counts how often it is asked.
RulePtr fixed(bool value, const char* name, int* asked = nullptr) {
  return makeRule([=] {
    if (asked) ++*asked;
    return value ? BoolResult(true) : BoolResult::failure(name);
  });
}

TEST(Rule, CompositesSayWhatFailedAndAskNoMoreThanNeeded) {
  int asked = 0;
  const RulePtr a = fixed(true, "A"), b = fixed(false, "B"), c = fixed(false, "C"),
                never = fixed(true, "D", &asked);
  const auto why = [](const RulePtr& rule) { return rule->check().getMessage(); };
  EXPECT_TRUE((a && a)->check() && (a || b)->check() && (b || a)->check() && none()->check());
  EXPECT_EQ(why(a && b), "B");
  EXPECT_EQ(why(b && never), "B");
  EXPECT_TRUE(has(why(b || c), "B") && has(why(b || c), "C"));
  EXPECT_EQ(why(If(a, b, never)), "B");
  EXPECT_EQ(why(If(b, never, c)), "C");
  EXPECT_EQ(why(If(a, b)), "B");
  EXPECT_TRUE(If(b, never)->check() && If(b, never, a)->check());
  EXPECT_EQ(asked, 0) << "a rule may rely on those that guard it";
}

TEST(Rule, OptionalIsSet) {
  auto p = makeReady<EveryKind>();
  const auto limit = boost::make_shared<RuleOptionalIsSet>(p->accessAttribute<attr::InOptLimit>());
  const auto scale = boost::make_shared<RuleOptionalIsSet>(p->accessAttribute<attr::InOptScale>());
  EXPECT_TRUE(has(limit->check().getMessage(), "InOptLimit"));
  p->set<attr::InOptLimit>(0);
  EXPECT_TRUE((limit || scale)->check());
  EXPECT_FALSE((limit && scale)->check()) << "a default is no value that was set";
  p.reset();
  EXPECT_FALSE(limit->check());
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
