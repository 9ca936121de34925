#include <gtest/gtest.h>

#include "VEXOProcessing/TestProcessors.h"

namespace {

using namespace vexo;
using namespace vexo::processor;
using namespace vexo::test;
namespace attr = vexo::test::attr;
using Sets = InstructionSetsIdentifier;

std::atomic<int> lastKernel{0};
template <int number>
const char* numbered(const ProcessingInfo&) {
  lastKernel = number;
  return nullptr;
}
const char* failing(const ProcessingInfo&) {
  return "the kernel gave up";
}

DataTypeIdentifierColl types(image::eImageBufferType in, image::eImageBufferType out) {
  DataTypeIdentifierColl result;
  for (const auto type : {in, out}) result.add(boost::make_shared<imaproc::ImageBufferTypeIdentifier>(type));
  return result;
}
const auto u8 = image::eImageBufferType::UInt8;
const auto real = image::eImageBufferType::Real32;

AlgorithmFunctionIdentifier entry(const Sets& sets, KernelFunction function) {
  return {types(u8, real), sets, AlgorithmFunctionEfficiency(sets).getEfficiency(), {function, nullptr}};
}

TEST(Efficiency, GrowsWithTheVectors) {
  const std::vector<Sets> rising = {{eIS_Standard}, {eIS_SSE2},           {eIS_AVX},
                                    {eIS_AVX2},     {eIS_AVX2, eIS_FMA3}, {eIS_AVX512}};
  for (std::size_t i = 1; i < rising.size(); ++i)
    EXPECT_LT(AlgorithmFunctionEfficiency(rising[i - 1]).getEfficiency(),
              AlgorithmFunctionEfficiency(rising[i]).getEfficiency());
}

TEST(Selector, TakesTheMostEfficientOfTheAllowed) {
  AlgorithmFunctionSelector selector;
  // Not in order: neither the first nor the last may win by its place.
  selector.registerFunction(entry({eIS_AVX2}, numbered<3>));
  selector.registerFunction(entry({eIS_AVX2, eIS_FMA3}, numbered<4>));
  selector.registerFunction(entry({eIS_Standard}, numbered<1>));
  selector.registerFunction(entry({eIS_SSE2}, numbered<2>));
  EXPECT_EQ(selector.getFunctionCount(), 4u);
  const auto select = [&](const Sets& allowed) { return selector.select(types(u8, real), allowed).function; };
  EXPECT_EQ(select({}), numbered<4>);
  EXPECT_EQ(select({eIS_Standard}), numbered<1>);
  EXPECT_EQ(select({eIS_Standard, eIS_SSE2}), numbered<2>);
  EXPECT_EQ(select({eIS_AVX2}), numbered<3>);
  EXPECT_EQ(select({eIS_AVX2, eIS_FMA3, eIS_SSE2}), numbered<4>);
  EXPECT_EQ(select({eIS_FMA3}), nullptr);
  EXPECT_EQ(select({eIS_AVX512}), nullptr);
  EXPECT_EQ(selector.select(types(real, u8), {}).function, nullptr);
  EXPECT_EQ(selector.select(DataTypeIdentifierColl(), {}).function, nullptr);
  EXPECT_EQ(types(u8, real).getNames(), "uint8, float32");
}

TEST(KernelRegistrator, LeavesOutWhatTheProcessorLacksAndMissingPairs) {
  KernelTable all = makePlainTable(numbered<1>), few = {};
  few.functions[0][6] = numbered<2>;
  few.functions[6][6] = numbered<2>;
  AlgorithmFunctionSelector selector;
  const KernelRegistrator registrator(selector, {{{eIS_Standard}, few}});
  EXPECT_EQ(selector.getFunctionCount(), 2u);
  EXPECT_EQ(selector.select(types(u8, real), {}).function, numbered<2>);
  EXPECT_EQ(selector.select(types(u8, real), {}).table, &few);
  EXPECT_EQ(selector.select(types(real, u8), {}).function, nullptr);
  std::size_t expected = 2;
  for (const eInstructionSet set :
       {eIS_SSE2, eIS_AVX, eIS_AVX2, eIS_AVX512, static_cast<eInstructionSet>(15)}) {
    const KernelRegistrator more(selector, {{{eIS_Standard, set}, all}});
    if (core::isAvailable(set)) expected += 49;
    EXPECT_EQ(selector.getFunctionCount(), expected) << set;
  }
}

TEST(KernelRegistrator, RegistersFunctionsWithoutTargetsByTheirInput) {
  KernelTable table = {};
  table.inputFunctions[6] = numbered<1>;
  AlgorithmFunctionSelector selector;
  const KernelRegistrator registrator(selector, {{{eIS_Standard}, table}});
  const auto select = [&](image::eImageBufferType type) {
    DataTypeIdentifierColl input;
    input.add(boost::make_shared<imaproc::ImageBufferTypeIdentifier>(type));
    return selector.select(input, {}).function;
  };
  EXPECT_EQ(select(real), numbered<1>);
  EXPECT_EQ(select(u8), nullptr);
  EXPECT_EQ(selector.select(types(real, real), {}).function, nullptr);
}

/// A third-level class with kernels of its own, which a test may take away.
class Numbered final : public KernelProcessorClass<Numbered> {
public:
  using Attributes = AttributeList<attr::InKnlStrip, attr::OutStrip>;
  static constexpr auto toolTipId = eTestMessage::Steps;
};
const KernelTable first = makePlainTable(numbered<1>), second = makePlainTable(numbered<2>),
                  third = makePlainTable(failing);
const KernelTable fewPairs = [] {
  KernelTable table = first;
  for (auto& row : table.functions) row[2] = nullptr;
  for (auto& row : table.functions) row[3] = failing;
  return table;
}();
const KernelRegistrator kernels(Numbered::retrieveFunctionSelector(), {{{eIS_Standard}, fewPairs}});

boost::shared_ptr<Numbered> makeNumbered(image::eImageBufferType out) {
  const auto p = makeReady<Numbered>();
  const auto in = image::Image::create({4, 3}, u8);
  const auto to = image::Image::create({4, 3}, out);
  p->set<attr::InKnlStrip>(boost::make_shared<image::InputStrip>(in, Cut::Y, 0, 3, image::StripMargins()));
  p->set<attr::OutStrip>(
      boost::make_shared<image::OutputStrip>(to, Cut::Y, 0, 3, image::eStripAllocationType::View));
  return p;
}

TEST(ThirdLevel, ForcingChoosesAmongItsFunctions) {
  static const bool added = [] {
    // As for a newer processor than this one: registered by hand, because it need not be offered here.
    for (int in = 0; in < 7; ++in) {
      AlgorithmFunctionIdentifier e = entry({eIS_SSE2}, numbered<2>);
      e.types = types(static_cast<image::eImageBufferType>(in), real);
      e.function.table = &second;
      Numbered::retrieveFunctionSelector().registerFunction(e);
    }
    return true;
  }();
  ASSERT_TRUE(added);
  const auto p = makeNumbered(real);
  executeSyncRun(p);
  EXPECT_EQ(lastKernel, 2);
  makeNumbered(real)->forceInstructionSets({eIS_Standard});
  executeSyncRun(p);
  EXPECT_EQ(lastKernel, 1) << "forcing counts for every instance";
  EXPECT_EQ(p->getForcedInstructionSets().getSets(), std::set<eInstructionSet>{eIS_Standard});
  p->forceInstructionSets({eIS_AVX512});
  const std::string why = messageOf([&] { executeSyncRun(p); });
  EXPECT_TRUE(has(why, "uint8, float32") && has(why, "Numbered") && has(why, "avx512")) << why;
  p->releaseForcedInstructionSets();
  executeSyncRun(p);
  EXPECT_EQ(lastKernel, 2);
}

TEST(ThirdLevel, NoFunctionAndFailingFunctionFailTheRun) {
  const std::string none = messageOf([] { executeSyncRun(makeNumbered(image::eImageBufferType::UInt16)); });
  EXPECT_TRUE(has(none, "uint8, uint16") && has(none, "Numbered")) << none;
  EXPECT_TRUE(has(messageOf([] { executeSyncRun(makeNumbered(image::eImageBufferType::Int16)); }),
                  "the kernel gave up"));
}

TEST(ThirdLevel, GenericProcessFunctionRunsThatOfTheTypes) {
  Numbered p;
  lastKernel = 0;
  EXPECT_TRUE((p.genericProcessFunction<std::uint8_t, float, eIS_Standard>({})));
  EXPECT_EQ(lastKernel, 1);
  EXPECT_FALSE((p.genericProcessFunction<std::uint8_t, std::uint16_t, eIS_Standard>({})));
  EXPECT_FALSE((p.genericProcessFunction<std::uint8_t, float, eIS_AVX512>({})));
  EXPECT_TRUE(
      has((p.genericProcessFunction<std::uint8_t, std::int16_t, eIS_Standard>({})).getMessage(), "gave up"));
}

TEST(GpuLevel, RefusesHostImagesAndKeepsFailures) {
  const auto p = makeReady<OnGpu>();
  p->set<attr::InFlag>(true);
  executeSyncRun(p);
  EXPECT_EQ(p->runs, 1);
  EXPECT_EQ(p->getProgress(), 1);
  p->set<attr::InFlag>(false);
  EXPECT_TRUE(has(messageOf([&] { executeSyncRun(p); }), "the flag is down"));
  p->set<attr::InOptMask>(image::Image::create({4, 3}, u8));
  EXPECT_TRUE(has(messageOf([&] { executeSyncRun(p); }), "InOptMask"));
  EXPECT_EQ(p->runs, 2);
}

}  // namespace
