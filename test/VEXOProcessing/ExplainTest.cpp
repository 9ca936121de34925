#include <gtest/gtest.h>

#include "VEXOProcessing/TestProcessors.h"
#include "VEXOSerialization/JsonArchive.h"

namespace {

using namespace vexo;
using namespace vexo::processor;
using namespace vexo::test;
namespace attr = vexo::test::attr;

/// Without the flag two children, one after the other; with it one that is known before the run.
class Chooser final : public ProcessorClass<Chooser, BaseRepeatedAsync1Processor> {
public:
  using Attributes = AttributeList<attr::InFlag, attr::InOptScale>;
  static constexpr auto toolTipId = eTestMessage::Steps;
  std::function<void()> atFirstStep;

private:
  ChoiceColl foreseeChoices() const override {
    return {getStorage<attr::InFlag>() ? choiceOf<EveryKind>("the flag is set")
                                       : choiceOf<Steps1>("the flag is not set")};
  }
  std::size_t getRepetitionCount() const override { return getStorage<attr::InFlag>() ? 1 : 2; }
  BoolResult retrieveProvider(const core::BasePriority&, std::size_t i, Provider&) override {
    recordChoice(i == 0 ? foreseeChoices().front() : choiceOf<Steps2>("found on the way"));
    if (i == 0 && atFirstStep) atFirstStep();
    return true;
  }
};

std::string explained(const BaseProcessor& p) {
  std::string text;
  for (const auto& [child, reason] : p.explain()) text += child + ": " + reason + "\n";
  return text;
}

const std::string foreseen = "Steps1: the flag is not set\n", made = foreseen + "Steps2: found on the way\n",
                  withFlag = "EveryKind: the flag is set\n";

boost::shared_ptr<Chooser> makeChooser(bool flag) {
  return prepareCall<Chooser, attr::InFlag>(flag);
}

TEST(Explain, TellsWhatTheAttributesDecideUntilThereIsARun) {
  EXPECT_EQ(explained(*Chooser::createProcessor()), "") << "not initialised";
  EXPECT_EQ(explained(*makeReady<Chooser>()), "") << "the flag has no value";
  const auto p = makeChooser(false);
  EXPECT_EQ(explained(*p), foreseen);
  for (int run = 0; run < 2; ++run) {
    executeSyncRun(p);
    EXPECT_EQ(explained(*p), made) << "run " << run;
  }
  p->set<attr::InOptScale>(5);
  EXPECT_EQ(explained(*p), foreseen) << "any attribute may bear on the choice";
  p->set<attr::InFlag>(true);
  EXPECT_EQ(explained(*p), withFlag);
  p->run(core::eSynchroType::Asynchronous);
  p->wait();
  EXPECT_EQ(explained(*p), withFlag) << "nothing is left of the run before";
  EXPECT_EQ(explained(*makeSum(rangeImage({3, 3}, image::eImageBufferType::UInt8, 0, 9, 1))), "")
      << "nothing to choose";
}

TEST(Explain, TellsWhatAFailedRunHasChosen) {
  const auto p = makeChooser(false);
  p->atFirstStep = [] { throw std::runtime_error("broke"); };
  EXPECT_FALSE(p->run(core::eSynchroType::Synchronous));
  EXPECT_EQ(explained(*p), foreseen);
  p->atFirstStep = nullptr;
  executeSyncRun(p);
  p->findAttribute("InFlag")->clear();
  EXPECT_FALSE(p->run(core::eSynchroType::Synchronous));
  EXPECT_EQ(explained(*p), "") << "a run that its check has stopped chooses nothing";
}

TEST(Explain, BeginsAnewWithInitCopyAndRead) {
  const auto p = makeChooser(false);
  executeSyncRun(p);
  const auto twin = makeChooser(true);
  executeSyncRun(twin);
  ASSERT_TRUE(twin->copy(*p));
  EXPECT_EQ(explained(*twin), foreseen);
  JsonOArchive text;
  makeChooser(true)->write(text);
  JsonIArchive archive(text.getText());
  ASSERT_TRUE(p->read(archive));
  EXPECT_EQ(explained(*p), withFlag);
  executeSyncRun(p);
  p->init();
  EXPECT_EQ(explained(*p), "");
}

TEST(Explain, KeepsWhatARunChoseWhenAValueIsRefused) {
  const auto p = makeChooser(false);
  executeSyncRun(p);
  EXPECT_ANY_THROW(p->set<attr::InCount>(1));
  EXPECT_EQ(explained(*p), made);
}

TEST(Explain, IsRefusedDuringARun) {
  const auto p = makeChooser(false);
  std::string failure;
  p->atFirstStep = [&] { failure = failureOf([&] { p->explain(); }); };
  executeSyncRun(p);
  EXPECT_TRUE(has(failure, "running"));
}

}  // namespace
