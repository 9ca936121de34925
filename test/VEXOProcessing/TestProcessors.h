#pragma once

#include <atomic>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>

#include "VEXOImage/TestTools.h"
#include "VEXOMath/Kernel.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"
#include "VEXOProcessing/ProcessorFactory.h"

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
struct InMask : Input<InMask> {};
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

// --- Sum over a window, in three levels, cut along any axis
// ---------------------------------------------------------

template <class T>
void loadPlain(float* line, const image::StripSource& s, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const unsigned char* sample = image::sourceSample(s, x + i, y, z);
    T value;
    std::memcpy(&value, sample ? sample : s.constant, sizeof value);
    line[i] = static_cast<float>(value);
  }
}
template <class T>
void storePlain(const image::StripTarget& t, const float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z,
                ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const T value = static_cast<T>(line[i]);
    std::memcpy(image::targetRow(t, y, z) + (x - t.begin[0] + i) * t.sampleSize, &value, sizeof value);
  }
}

/// A table with one function for all pairs of types.
processor::KernelTable makePlainTable(processor::KernelFunction function,
                                      size_t (*scratchSize)(const processor::ProcessingInfo&) = nullptr);
const char* windowSumKernel(const processor::ProcessingInfo& info);
size_t windowSumScratch(const processor::ProcessingInfo& info);

template <class Derived>
class WindowSumLvl3 : public processor::KernelProcessorClass<Derived> {
public:
  using Attributes = processor::AttributeList<attr::InKnlStrip, attr::InBorder, attr::OutStrip>;
  static constexpr auto toolTipId = eTestMessage::WindowSum;
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {5, 2}; }

private:
  BoolResult preProcessStrip() override {
    this->template accessParser<attr::InKnlStrip>().setBorder2dPolicy(
        this->template getStorage<attr::InBorder>());
    return true;
  }
};

template <class Derived, class Next, image::eStripParsingDirection direction>
class WindowSumLvl2 : public processor::ProcessorClass<Derived, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InPart, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::InBorder, attr::OutPart>;
  static constexpr auto toolTipId = eTestMessage::WindowSum;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override {
    using namespace imaproc;
    const auto in = this->template getStorage<attr::InPart>();
    const auto out = this->template getStorage<attr::OutPart>();
    const bool inPlace = isInSitu(this->template accessAttribute<attr::InPart>(),
                                  this->template accessAttribute<attr::OutPart>());
    const auto margins = centredMargins(this->template getStorage<attr::InHalfKnlSizeX>(),
                                        this->template getStorage<attr::InHalfKnlSizeY>(),
                                        this->template getStorage<attr::InHalfKnlSizeZ>());
    provider = processor::dispatchStrips<Next>(
        priority,
        boost::make_shared<ImageStripSplit<Next, const image::BaseImage, attr::InKnlStrip, direction>>(
            in, inPlace ? image::eStripAllocationType::OwnBuffer : image::eStripAllocationType::View,
            margins),
        processor::dynamicNoSplit<Next, attr::InBorder>(this->template getStorage<attr::InBorder>()),
        boost::make_shared<ImageStripSplit<Next, image::BaseImage, attr::OutStrip, direction>>(
            out, image::eStripAllocationType::View));
    return true;
  }
};

template <class Derived, class Next, imaproc::eSubImageSplitType pieces>
class WindowSumLvl1 : public processor::ProcessorClass<Derived, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::InBorder, attr::OutImg>;
  static constexpr auto toolTipId = eTestMessage::WindowSum;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    initializers["OutImg"] = imaproc::duplicateInOut<attr::InImg, attr::OutImg>(
        this->template accessAttribute<attr::OutImg>(), this->template accessAttribute<attr::InImg>());
  }
  processor::RulePtr createRule() const override {
    return imaproc::matchSize(this->template accessAttribute<attr::InImg>(),
                              this->template accessAttribute<attr::OutImg>());
  }
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override {
    const auto same = [this](auto* attribute) {
      using A = std::remove_pointer_t<decltype(attribute)>;
      return processor::staticNoSplit<Next, A>(this->template getStorage<A>());
    };
    provider = processor::dispatchPieces<Next>(
        priority,
        boost::make_shared<imaproc::SubImageSplit<Next, attr::InPart>>(
            this->template getStorage<attr::InImg>(), pieces),
        same(static_cast<attr::InHalfKnlSizeX*>(nullptr)), same(static_cast<attr::InHalfKnlSizeY*>(nullptr)),
        same(static_cast<attr::InHalfKnlSizeZ*>(nullptr)), same(static_cast<attr::InBorder*>(nullptr)),
        boost::make_shared<imaproc::SubImageSplit<Next, attr::OutPart>>(
            this->template getStorage<attr::OutImg>(), pieces));
    return true;
  }
};

using Cut = image::eStripParsingDirection;
using Pieces = imaproc::eSubImageSplitType;
class WindowSumXLvl3 final : public WindowSumLvl3<WindowSumXLvl3> {};
class WindowSumXLvl2 final : public WindowSumLvl2<WindowSumXLvl2, WindowSumXLvl3, Cut::X> {};
class WindowSumXLvl1 final : public WindowSumLvl1<WindowSumXLvl1, WindowSumXLvl2, Pieces::Plane2d> {};
class WindowSumYLvl3 final : public WindowSumLvl3<WindowSumYLvl3> {};
class WindowSumYLvl2 final : public WindowSumLvl2<WindowSumYLvl2, WindowSumYLvl3, Cut::Y> {};
class WindowSumYLvl1 final : public WindowSumLvl1<WindowSumYLvl1, WindowSumYLvl2, Pieces::Plane2d> {};
class WindowSumZLvl3 final : public WindowSumLvl3<WindowSumZLvl3> {};
class WindowSumZLvl2 final : public WindowSumLvl2<WindowSumZLvl2, WindowSumZLvl3, Cut::Z> {};
class WindowSumZLvl1 final : public WindowSumLvl1<WindowSumZLvl1, WindowSumZLvl2, Pieces::Volume3d> {};

/// The reference: adds up the window of every sample, plane by plane or volume by volume.
boost::shared_ptr<image::Image> naiveWindowSum(const image::Image& image, std::ptrdiff_t halfX,
                                               std::ptrdiff_t halfY, std::ptrdiff_t halfZ,
                                               const image::BorderPolicy& border,
                                               image::eImageBufferType type);

// --- Processors whose work a test supplies
// --------------------------------------------------------------------------

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

protected:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    // Creates the output only where there is an input to take the size from.
    struct FromMask final : processor::BaseOutputInitializer {
      boost::weak_ptr<attr::InOptMask> in;
      boost::weak_ptr<attr::OutImg> out;
      void initOutputAttribute() override {
        if (const auto mask = in.lock()->getImage())
          out.lock()->setImage(mask->createSimilar(mask->getGeometry(), mask->getBufferType()));
      }
    };
    const auto initializer = boost::make_shared<FromMask>();
    initializer->in = this->template accessAttribute<attr::InOptMask>();
    initializer->out = this->template accessAttribute<attr::OutImg>();
    initializers["OutImg"] = initializer;
  }
  void clearIntermediateData() override {
    if (atEnd) atEnd();
  }
  BoolResult give(std::size_t i, Provider& provider) {
    if (step) provider = step(i);
    return true;
  }
};
class Steps1 final : public Scripted<Steps1, processor::BaseAsync1Processor> {
  BoolResult retrieveProvider(const core::BasePriority&, Provider& provider) override {
    return give(0, provider);
  }
};
class Steps2 final : public Scripted<Steps2, processor::BaseAsync2Processor> {
  BoolResult retrieveFirstProvider(const core::BasePriority&, Provider& provider) override {
    return give(0, provider);
  }
  BoolResult retrieveSecondProvider(const core::BasePriority&, Provider& provider) override {
    return give(1, provider);
  }
};
class Steps3 final : public Scripted<Steps3, processor::BaseAsync3Processor> {
  BoolResult retrieveFirstProvider(const core::BasePriority&, Provider& provider) override {
    return give(0, provider);
  }
  BoolResult retrieveSecondProvider(const core::BasePriority&, Provider& provider) override {
    return give(1, provider);
  }
  BoolResult retrieveThirdProvider(const core::BasePriority&, Provider& provider) override {
    return give(2, provider);
  }
};
class Repeated final : public Scripted<Repeated, processor::BaseRepeatedAsync1Processor> {
public:
  std::size_t count = 0;

private:
  std::size_t getRepetitionCount() const override { return count; }
  BoolResult retrieveProvider(const core::BasePriority&, std::size_t i, Provider& provider) override {
    return give(i, provider);
  }
};

template <class P>
boost::shared_ptr<P> makeReady() {
  const auto processor = P::createProcessor();
  if (const BoolResult ready = processor->init(); !ready) ADD_FAILURE() << ready.getMessage();
  return processor;
}

// --- A parameter of every kind
// --------------------------------------------------------------------------------------

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
