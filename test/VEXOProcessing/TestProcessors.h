#pragma once

#include <atomic>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>

#include "VEXOMath/Kernel.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "tools/ImageChecks.h"

// Splits and dispatchers by hand, in one expression.
namespace vexo::imaproc {
template <class P, class A>
boost::shared_ptr<SubImageSplit<P, A>> planeSplit(const typename A::StorageType& image) {
  return boost::make_shared<SubImageSplit<P, A>>(image, eSubImageSplitType::Plane2d);
}
template <class P, class A>
boost::shared_ptr<SubImageSplit<P, A>> volumeSplit(const typename A::StorageType& image) {
  return boost::make_shared<SubImageSplit<P, A>>(image, eSubImageSplitType::Volume3d);
}
}  // namespace vexo::imaproc
namespace vexo::processor {
/// Dispatchers in one expression: over the pieces of static splits, and over strips.
template <class P, class... Splits>
boost::shared_ptr<core::BaseActionProvider> dispatchPieces(const core::BasePriority& priority,
                                                           const boost::shared_ptr<Splits>&... splits) {
  const auto dispatcher = boost::make_shared<StaticProcessorDispatcher<P>>();
  dispatcher->initBase(priority, {splits...});
  return dispatcher;
}
template <class P, class... Splits>
boost::shared_ptr<core::BaseActionProvider> dispatchStrips(const core::BasePriority& priority,
                                                           const boost::shared_ptr<Splits>&... splits) {
  const auto dispatcher = boost::make_shared<DynamicProcessorDispatcher<P>>();
  dispatcher->initBase(priority, {splits...});
  return dispatcher;
}
}  // namespace vexo::processor

namespace vexo::test {

enum class eTestMessage { WindowSum = 1, Steps = 2, EveryKind = 3 };

/// Dark, medium or bright.
enum class eShade { Dark, Medium, Bright };

class Range : public BaseDataItemNode {
public:
  Range() : BaseDataItemNode("Range", "From a least to a greatest value") {
    add(least), add(greatest), add(closed);
  }
  DataItemLeaf<float> least{"Least", "", -1.5f};
  DataItemLeaf<std::int32_t> greatest{"Greatest", "", 7};
  DataItemLeaf<bool> closed{"Closed", "", true};
};

}  // namespace vexo::test

namespace vexo {
template <>
struct MessageMap<test::eTestMessage> {
  static LogMessageManager& manager() { return LogMessageManager::getInstance("FrameTest"); }
  static const std::vector<std::pair<test::eTestMessage, const char*>>& messages() {
    static const std::vector<std::pair<test::eTestMessage, const char*>> table = {
        {test::eTestMessage::WindowSum, "Sum over a window"},
        {test::eTestMessage::Steps, "Runs what a test gives it"},
        {test::eTestMessage::EveryKind, "Has a parameter of every kind"}};
    return table;
  }
};
template <>
struct processor::EnumNames<test::eShade> {
  static constexpr std::array<const char*, 3> names = {"dark", "medium", "bright"};
};
}  // namespace vexo

namespace vexo::test {

namespace attr {
using namespace imaproc::attr;

template <class Derived, class Value>
struct Plain : processor::Attribute<Derived, Value> {
  static constexpr char toolTip[] = "A value";
};
struct InFlag : Plain<InFlag, bool> {};
struct InCount : Plain<InCount, std::uint32_t> {
  static BoolResult check(std::uint32_t value) {
    if (value != 13) return true;
    return BoolResult::failure("13 brings no luck");
  }
};
struct InOffset : Plain<InOffset, std::int32_t> {};
struct InFactor : Plain<InFactor, float> {};
struct InPrecise : Plain<InPrecise, double> {};
struct InLabel : Plain<InLabel, std::string> {};
struct InShade : Plain<InShade, eShade> {};
struct InRange : Plain<InRange, boost::shared_ptr<const Range>> {};
struct InKnl : Plain<InKnl, boost::shared_ptr<const KernelXY>> {};
struct InBorder : Plain<InBorder, boost::shared_ptr<const image::Border2dPolicy>> {
  static boost::shared_ptr<const image::Border2dPolicy> defaultValue() { return image::mirorBorder2d(); }
};
struct InOptLimit : Plain<InOptLimit, float> {};
struct InOptScale : Plain<InOptScale, std::uint32_t> {
  static std::uint32_t defaultValue() { return 3; }
};
struct InOutCounter : Plain<InOutCounter, std::int32_t> {};
struct OutMaximum : Plain<OutMaximum, double> {};

template <class Derived>
struct Input : processor::InputImageAttribute<Derived> {
  static constexpr char toolTip[] = "An image that is read";
};
template <class Derived>
struct Output : processor::OutputImageAttribute<Derived> {
  static constexpr char toolTip[] = "An image that is written";
};
struct InOptMask : Input<InOptMask> {};
struct InPart : Input<InPart> {};
struct InOutImg : Output<InOutImg> {};
struct OutPart : Output<OutPart> {};
struct OutRealImg : Output<OutRealImg> {};
struct OutOptImg : Output<OutOptImg> {};
struct OutWk2Img : Output<OutWk2Img> {};
struct OutOptWk1Img : Output<OutOptWk1Img> {};

struct InKnlStrip : processor::InputStripAttribute<InKnlStrip> {
  static constexpr char toolTip[] = "A strip that is read";
};
struct OutStrip : processor::OutputStripAttribute<OutStrip> {
  static constexpr char toolTip[] = "A strip that is written";
};
}  // namespace attr

// --- Sum over a square window, in three levels, cut along x (the filters cut along y and z)

/// A table with one function for all pairs of types.
processor::KernelTable makePlainTable(processor::KernelFunction function,
                                      size_t (*scratchSize)(const processor::ProcessingInfo&) = nullptr);

class WindowSumLvl3 final : public processor::KernelProcessorClass<WindowSumLvl3> {
public:
  using Attributes = processor::AttributeList<attr::InKnlStrip, attr::InBorder, attr::OutStrip>;
  static constexpr auto toolTipId = eTestMessage::WindowSum;
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {5, 2}; }

private:
  BoolResult preProcessStrip() override {
    accessParser<attr::InKnlStrip>().setBorder2dPolicy(getStorage<attr::InBorder>());
    return true;
  }
};
class WindowSumLvl2 final : public processor::ProcessorClass<WindowSumLvl2, processor::BaseAsync1Processor> {
public:
  using Attributes =
      processor::AttributeList<attr::InPart, attr::InHalfKnlSizeX, attr::InBorder, attr::OutPart>;
  static constexpr auto toolTipId = eTestMessage::WindowSum;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};
class WindowSumLvl1 final : public processor::ProcessorClass<WindowSumLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes =
      processor::AttributeList<attr::InImg, attr::InHalfKnlSizeX, attr::InBorder, attr::OutImg>;
  static constexpr auto toolTipId = eTestMessage::WindowSum;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override;
  processor::RulePtr createRule() const override;
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

/// Prepared with the default border; the reference, which adds up the window of every sample; the output.
boost::shared_ptr<WindowSumLvl1> makeSum(const boost::shared_ptr<const image::BaseImage>& in,
                                         std::uint32_t half = 1);
boost::shared_ptr<image::Image> sumOf(const image::Image& image, image::eImageBufferType type,
                                      std::ptrdiff_t half = 1,
                                      const image::BorderPolicy& border = *image::mirorBorder2d());
const image::Image& resultOf(const processor::BaseProcessor& p);

// --- Processors whose work a test supplies

using Share = core::RunShare;
using Provider = boost::shared_ptr<core::BaseActionProvider>;

class FunctionPieces final : public core::BaseActionProvider {
public:
  using Body = std::function<void(std::size_t)>;
  FunctionPieces(std::size_t count, Body body) : _count(count), _body(std::move(body)) {}
  std::size_t prepare() override { return _count; }
  void runPiece(std::size_t index, const core::RunShare& share) override {
    _body(index);
    share.done();
  }

private:
  std::size_t _count;
  Body _body;
};
inline Provider pieces(std::size_t count, FunctionPieces::Body body) {
  return boost::make_shared<FunctionPieces>(count, std::move(body));
}

/// Providers come from `step(i)`, for the i-th step. An image is copied in and out where a test needs one.
template <class Derived, class Base>
class Scripted : public processor::ProcessorClass<Derived, Base> {
public:
  using Attributes = processor::AttributeList<attr::InOptMask, attr::OutImg, attr::OutOptWk1Img>;
  static constexpr auto toolTipId = eTestMessage::Steps;
  std::function<Provider(std::size_t)> step;
  std::function<void()> atEnd;
  std::vector<double> costs = {1, 1, 1};

protected:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    // Creates the output only where there is an input to take the size from.
    struct FromMask final : processor::BaseOutputInitializer {
      const Scripted* p = nullptr;
      void initOutputAttribute() override {
        if (const auto mask = p->template getStorage<attr::InOptMask>())
          p->template accessAttribute<attr::OutImg>()->setImage(
              mask->createSimilar(mask->getGeometry(), mask->getBufferType()));
      }
    };
    const auto initializer = boost::make_shared<FromMask>();
    initializer->p = this;
    initializers["OutImg"] = initializer;
  }
  void clearIntermediateData() override {
    if (atEnd) atEnd();
  }
  double getStepCost(std::size_t i) const override { return i < costs.size() ? costs[i] : 1; }
  BoolResult give(std::size_t i, Provider& provider) {
    if (step) provider = step(i);
    return true;
  }
};
class Steps1 final : public Scripted<Steps1, processor::BaseAsync1Processor> {
  BoolResult retrieveProvider(const core::BasePriority&, Provider& p) override { return give(0, p); }
};
class Steps2 final : public Scripted<Steps2, processor::BaseAsync2Processor> {
  BoolResult retrieveFirstProvider(const core::BasePriority&, Provider& p) override { return give(0, p); }
  BoolResult retrieveSecondProvider(const core::BasePriority&, Provider& p) override { return give(1, p); }
};
class Steps3 final : public Scripted<Steps3, processor::BaseAsync3Processor> {
  BoolResult retrieveFirstProvider(const core::BasePriority&, Provider& p) override { return give(0, p); }
  BoolResult retrieveSecondProvider(const core::BasePriority&, Provider& p) override { return give(1, p); }
  BoolResult retrieveThirdProvider(const core::BasePriority&, Provider& p) override { return give(2, p); }
};
class Repeated final : public Scripted<Repeated, processor::BaseRepeatedAsync1Processor> {
public:
  std::size_t count = 0;

private:
  std::size_t getRepetitionCount() const override { return count; }
  BoolResult retrieveProvider(const core::BasePriority&, std::size_t i, Provider& p) override {
    return give(i, p);
  }
};

template <class P>
boost::shared_ptr<P> makeReady() {
  const auto processor = P::createProcessor();
  if (const BoolResult ready = processor->init(); !ready) ADD_FAILURE() << ready.getMessage();
  return processor;
}

// --- A parameter of every kind

class EveryKind final : public processor::ProcessorClass<EveryKind, processor::BaseProcessor> {
public:
  using Attributes =
      processor::AttributeList<attr::InFlag, attr::InCount, attr::InOffset, attr::InFactor, attr::InPrecise,
                               attr::InLabel, attr::InShade, attr::InRange, attr::InKnl, attr::InBorder,
                               attr::InOptLimit, attr::InOptScale, attr::InOutCounter, attr::InImg,
                               attr::InOptMask, attr::InOutImg, attr::OutMaximum, attr::OutRealImg,
                               attr::OutOptImg, attr::OutWk2Img, attr::OutOptWk1Img>;
  static constexpr auto toolTipId = eTestMessage::EveryKind;
  static constexpr std::uint32_t version = 2;
  bool workImagesWereThere = false;
  bool failAtEnd = false;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override;
  /// The greatest sample into OutMaximum, each sample times InFactor into OutRealImg; counts its runs in
  /// InOutCounter.
  void process(const core::RunShare& share) override;
};
/// One with all mandatory inputs.
boost::shared_ptr<EveryKind> makeEveryKind(const image::ImageGeometry& geometry = {5, 4});
/// Compares all values but images.
void expectSameValues(const EveryKind& a, const EveryKind& b);

class OnGpu final : public processor::ProcessorClass<OnGpu, processor::BaseGpuProcessingAlgorithm> {
public:
  using Attributes = processor::AttributeList<attr::InFlag, attr::InOptMask>;
  static constexpr auto toolTipId = eTestMessage::Steps;
  int runs = 0;

private:
  BoolResult processOnGpu() override {
    ++runs;
    return getStorage<attr::InFlag>() ? BoolResult(true) : BoolResult::failure("the flag is down");
  }
};

}  // namespace vexo::test
