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

TEST(Selector, TakesTheMostEfficientOfTheAllowed) {
  AlgorithmFunctionSelector selector;
  // Not in order: neither the first nor the last may win by its place.
  selector.registerFunction(entry({eIS_AVX2}, numbered<4>));
  selector.registerFunction(entry({eIS_AVX2, eIS_FMA3}, numbered<5>));
  selector.registerFunction(entry({eIS_AVX512}, numbered<6>));
  selector.registerFunction(entry({eIS_Standard}, numbered<1>));
  selector.registerFunction(entry({eIS_AVX}, numbered<3>));
  selector.registerFunction(entry({eIS_SSE2}, numbered<2>));
  const std::pair<Sets, KernelFunction> choices[] = {{{}, numbered<6>},
                                                     {{eIS_Standard}, numbered<1>},
                                                     {{eIS_Standard, eIS_SSE2}, numbered<2>},
                                                     {{eIS_AVX, eIS_SSE2}, numbered<3>},
                                                     {{eIS_AVX, eIS_AVX2}, numbered<4>},
                                                     {{eIS_AVX2, eIS_FMA3, eIS_SSE2}, numbered<5>},
                                                     {{eIS_AVX512, eIS_AVX2, eIS_FMA3}, numbered<6>},
                                                     {{eIS_FMA3}, nullptr}};
  for (const auto& [allowed, function] : choices)
    EXPECT_EQ(selector.select(types(u8, real), allowed).function, function);
  EXPECT_EQ(selector.select(types(real, u8), {}).function, nullptr);
  EXPECT_EQ(selector.select(DataTypeIdentifierColl(), {}).function, nullptr);
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
const KernelTable second = makePlainTable(numbered<2>);
const KernelTable fewPairs = [] {
  KernelTable table = makePlainTable(numbered<1>);
  for (auto& row : table.functions) row[2] = nullptr;
  for (auto& row : table.functions) row[3] = failing;
  return table;
}();
const KernelRegistrator kernels(Numbered::retrieveFunctionSelector(), {{{eIS_Standard}, fewPairs}});

TEST(KernelRegistrator, LeavesOutWhatTheProcessorLacksAndMissingPairs) {
  AlgorithmFunctionSelector selector;
  const KernelRegistrator offered(selector, {{{eIS_Standard}, fewPairs}});
  const KernelRegistrator lacking(selector, {{{eIS_Standard, static_cast<eInstructionSet>(15)}, fewPairs}});
  EXPECT_EQ(selector.getFunctionCount(), 42u);
}

boost::shared_ptr<Numbered> makeNumbered(image::eImageBufferType out) {
  const auto p = makeReady<Numbered>();
  const auto in = image::Image::create({4, 3}, u8);
  const auto to = image::Image::create({4, 3}, out);
  p->set<attr::InKnlStrip>(boost::make_shared<image::InputStrip>(in, image::eStripParsingDirection::Y, 0, 3,
                                                                 image::StripMargins()));
  p->set<attr::OutStrip>(boost::make_shared<image::OutputStrip>(to, image::eStripParsingDirection::Y, 0, 3,
                                                                image::eStripAllocationType::View));
  return p;
}

TEST(ThirdLevel, ForcingChoosesAmongItsFunctions) {
  // As for a newer processor than this one: registered by hand, because it need not be offered here.
  AlgorithmFunctionIdentifier newer = entry({eIS_SSE2}, numbered<2>);
  newer.function.table = &second;
  Numbered::retrieveFunctionSelector().registerFunction(newer);
  const auto p = makeNumbered(real);
  executeSyncRun(p);
  EXPECT_EQ(lastKernel, 2);
  makeNumbered(real)->forceInstructionSets({eIS_Standard});
  executeSyncRun(p);
  EXPECT_EQ(lastKernel, 1) << "forcing counts for every instance";
  EXPECT_EQ(p->getForcedInstructionSets().getSets(), std::set<eInstructionSet>{eIS_Standard});
  p->forceInstructionSets({eIS_AVX512});
  expectFailure({"uint8, float32", "Numbered", "avx512"}, [&] { executeSyncRun(p); });
  p->releaseForcedInstructionSets();
  executeSyncRun(p);
  EXPECT_EQ(lastKernel, 2);
}

TEST(ThirdLevel, NoFunctionAndFailingFunctionFailTheRun) {
  expectFailure({"uint8, uint16", "Numbered"},
                [] { executeSyncRun(makeNumbered(image::eImageBufferType::UInt16)); });
  expectFailure({"the kernel gave up"}, [] { executeSyncRun(makeNumbered(image::eImageBufferType::Int16)); });
  Numbered p;
  lastKernel = 0;
  EXPECT_TRUE((p.genericProcessFunction<std::uint8_t, float, eIS_Standard>({})));
  EXPECT_EQ(lastKernel, 1);
  EXPECT_FALSE((p.genericProcessFunction<std::uint8_t, std::uint16_t, eIS_Standard>({})));
  EXPECT_FALSE((p.genericProcessFunction<std::uint8_t, float, eIS_AVX512>({})));
}

TEST(GpuLevel, RefusesHostImagesAndKeepsFailures) {
  const auto p = makeReady<OnGpu>();
  p->set<attr::InFlag>(true);
  executeSyncRun(p);
  EXPECT_EQ(p->runs, 1);
  EXPECT_EQ(p->getProgress(), 1);
  p->set<attr::InFlag>(false);
  expectFailure({"the flag is down"}, [&] { executeSyncRun(p); });
  p->set<attr::InOptMask>(image::Image::create({4, 3}, u8));
  expectFailure({"InOptMask"}, [&] { executeSyncRun(p); });
  EXPECT_EQ(p->runs, 2);
}

}  // namespace
