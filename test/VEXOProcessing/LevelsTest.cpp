// How levels hand values to each other, and outputs come about.

#include "VEXOProcessing/Levels.h"
#include "VEXOProcessing/TestProcessors.h"
#include "VEXOSerialization/JsonArchive.h"
#include "tools/Calls.h"

namespace vexo::test {
namespace {

using imaproc::LevelImages;
using imaproc::with;

/// What a piece has received, by the number in its first sample.
struct Received {
  std::mutex mutex;
  std::map<int, std::string> texts;
};
Received received;

class Piece final : public processor::ProcessorClass<Piece, processor::BaseProcessor> {
public:
  using Attributes = processor::AttributeList<attr::InPart, attr::InCount, attr::InFactor, attr::InLabel,
                                              attr::InOptScale, attr::OutPart>;
  static constexpr auto toolTipId = eTestMessage::Steps;

private:
  void process(const core::RunShare& share) override {
    const auto in = image::hostImage(getStorage<attr::InPart>(), "InPart").getRow<std::uint8_t>(0);
    std::string text = getStorage<attr::InLabel>();
    for (const double value : {double(getStorage<attr::InCount>()), double(getStorage<attr::InFactor>()),
                               double(getStorage<attr::InOptScale>())})
      text += " " + ScalarText<double>::toText(value);
    image::hostImage(getStorage<attr::OutPart>(), "OutPart").getRow<std::uint8_t>(0)[0] = in[0] + 100;
    const std::lock_guard<std::mutex> lock(received.mutex);
    received.texts[in[0]] = text;
    share.done();
  }
};

/// Its lists differ from those of the pieces in order and in names of images.
class Whole final : public processor::ProcessorClass<Whole, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::OutImg, attr::InFactor, attr::InOptScale, attr::InImg,
                                              attr::InCount, attr::OutOptWk1Img>;
  static constexpr auto toolTipId = eTestMessage::Steps;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    imaproc::duplicateInput(*this, initializers);
  }
  BoolResult retrieveProvider(const core::BasePriority& priority, Provider& provider) override {
    std::vector<std::string> labels;
    for (std::size_t i = 0; i < getStorage<attr::InImg>()->getSizeZ(); ++i)
      labels.push_back("part " + std::to_string(i));
    provider = imaproc::dispatchPlanes<Piece>(
        priority, *this, imaproc::withEach<Piece, attr::InLabel>(labels), with<attr::InCount>(7));
    return true;
  }
};

boost::shared_ptr<image::Image> numbered(std::size_t slices) {
  const auto image = image::Image::create({3, 2, slices}, image::eImageBufferType::UInt8);
  for (std::size_t z = 0; z < slices; ++z)
    image->getRow<std::uint8_t>(0, z)[0] = static_cast<std::uint8_t>(z);
  return image;
}

TEST(Levels, EachPieceGetsItsImagesTheValuesOfTheLevelAndWhatIsGivenInstead) {
  received.texts.clear();
  const auto whole = makeReady<Whole>();
  whole->set<attr::InImg>(numbered(3));
  whole->set<attr::InFactor>(1.5f);
  whole->set<attr::InCount>(1);
  executeSyncRun(whole);
  // An optional value that is not set stays unset: the next level has its default.
  EXPECT_EQ(received.texts, (std::map<int, std::string>{
                                {0, "part 0 7 1.5 3"}, {1, "part 1 7 1.5 3"}, {2, "part 2 7 1.5 3"}}));
  for (std::size_t z = 0; z < 3; ++z) EXPECT_EQ(getSample(resultOf(*whole), 0, 0, z), 100.0 + double(z));
  whole->set<attr::InOptScale>(9);
  executeSyncRun(whole);
  EXPECT_EQ(received.texts[2], "part 2 7 1.5 9");
}

// --- Outputs

struct Parts {
  image::ImagePtr real, optional;
};
/// Twice the input into OutRealImg, three times into OutOptImg where there is one, four times into InOutImg.
class Multiples final : public processor::ProcessorClass<Multiples, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::OutRealImg, attr::OutOptImg, attr::InOutImg>;
  static constexpr auto toolTipId = eTestMessage::Steps;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    imaproc::duplicateInput(*this, initializers);
  }
  processor::RulePtr createRule() const override { return imaproc::matchSizes(*this); }
  BoolResult retrieveProvider(const core::BasePriority&, Provider& provider) override {
    provider = imaproc::makeLeaf(*this, [this]() -> BoolResult {
      const image::Image& in = image::hostImage(getStorage<attr::InImg>(), "InImg");
      if (getSample(in, 0, 0) == 13) return BoolResult::failure("13 brings no luck");
      int factor = 2;
      for (const auto& output :
           {getStorage<attr::OutRealImg>(), getStorage<attr::OutOptImg>(), getStorage<attr::InOutImg>()}) {
        if (output)
          forEachSample(in.getGeometry(), [&](auto... at) {
            setSample(image::hostImage(output, "output"), factor * getSample(in, at...), at...);
          });
        ++factor;
      }
      return true;
    });
    return true;
  }
};
using Call = processor::CallForms<Multiples, processor::Outputs<Parts, attr::OutRealImg, attr::OutOptImg>,
                                  attr::InImg>;

boost::shared_ptr<image::Image> constant(double value) {
  const auto image = image::Image::create({4, 3}, image::eImageBufferType::Int16);
  forEachSample(image->getGeometry(), [&](auto... at) { setSample(*image, value, at...); });
  return image;
}
double valueOf(const image::ConstImagePtr& image) {
  return image ? getSample(image::hostImage(image, "image"), 3, 2) : -1;
}

TEST(Outputs, SeveralComeBackAsAStructureOrFillTheCallersImages) {
  const auto in = constant(5);
  const Parts made = Call::run(in);
  EXPECT_EQ(valueOf(made.real), 10);
  EXPECT_EQ(valueOf(made.optional), 15);
  const auto real = constant(0), optional = constant(0);
  Call::fill(in, real, optional);
  EXPECT_EQ(valueOf(real), 10);
  EXPECT_EQ(valueOf(optional), 15);
  const Parts later = Call::await(Call::start(in));
  EXPECT_EQ(valueOf(later.real) + valueOf(later.optional), 25);
  const Parts filled = Call::await(Call::startFill(in, real, optional));
  EXPECT_EQ(filled.real, real);
  EXPECT_EQ(filled.optional, optional);
  const auto thirteen = constant(13);
  expectFailure({"13 brings no luck"}, [&] { Call::run(thirteen); });
  expectFailure({"13 brings no luck"}, [&] { Call::await(Call::start(thirteen)); });
}

TEST(Outputs, OptionalOnesAreMadeOnRequestOnly) {
  const auto p = makeReady<Multiples>();
  p->set<attr::InImg>(constant(2));
  executeSyncRun(p);
  EXPECT_EQ(valueOf(p->getStorage<attr::OutRealImg>()), 4);
  EXPECT_FALSE(p->getStorage<attr::OutOptImg>());
  p->request<attr::OutOptImg>();
  executeSyncRun(p);
  const auto first = p->getStorage<attr::OutOptImg>();
  EXPECT_EQ(valueOf(first), 6);
  executeSyncRun(p);
  EXPECT_NE(p->getStorage<attr::OutOptImg>(), first) << "each run makes its own";
  const auto twin = boost::static_pointer_cast<Multiples>(p->duplicateShared());
  twin->set<attr::InImg>(constant(3));
  executeSyncRun(twin);
  EXPECT_EQ(valueOf(twin->getStorage<attr::OutOptImg>()), 9) << "a copy asks for the same";
  // One that has no initializer is its filter's own to make.
  expectFailure({"OutOptImg", "cannot be created"},
                [] { makeReady<EveryKind>()->request<attr::OutOptImg>(); });
}

TEST(Outputs, WhatGoesInAndOutIsMadeWhenItIsNotGiven) {
  const auto p = makeReady<Multiples>();
  p->set<attr::InImg>(constant(2));
  executeSyncRun(p);
  const auto made = p->getStorage<attr::InOutImg>();
  EXPECT_EQ(valueOf(made), 8);
  JsonOArchive written;
  p->write(written);
  EXPECT_EQ(written.getText().find("InOutImg"), std::string::npos) << "a result is no setting";
  executeSyncRun(p);
  EXPECT_NE(p->getStorage<attr::InOutImg>(), made);
  const auto own = constant(0);
  p->set<attr::InOutImg>(own);
  executeSyncRun(p);
  EXPECT_EQ(p->getStorage<attr::InOutImg>(), own);
  EXPECT_EQ(valueOf(own), 8);
  JsonOArchive withOwn;
  p->write(withOwn);
  EXPECT_NE(withOwn.getText().find("InOutImg"), std::string::npos);
}

/// Its second level lists an optional image that may not be there.
class Choosy final : public imaproc::FilterClass<Choosy, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InOptMask, attr::OutImg, attr::OutOptImg>;
  static constexpr auto toolTipId = eTestMessage::Steps;

  class Plane final : public processor::ProcessorClass<Plane, processor::BaseProcessor> {
  public:
    using Attributes =
        processor::AttributeList<attr::InPart, attr::InOptMask, attr::OutPart, attr::OutOptImg>;
    static constexpr auto toolTipId = eTestMessage::Steps;

  private:
    void process(const core::RunShare& share) override {
      double value = 1;
      if (getStorage<attr::InOptMask>()) value += 10;
      if (const auto second = getStorage<attr::OutOptImg>())
        setSample(image::hostImage(second, "OutOptImg"), value + 100, 3, 2);
      setSample(image::hostImage(getStorage<attr::OutPart>(), "OutPart"), value, 3, 2);
      share.done();
    }
  };

private:
  BoolResult retrieveProvider(const core::BasePriority& priority, Provider& provider) override {
    provider = imaproc::dispatchPlanes<Plane>(priority, *this);
    return true;
  }
};

TEST(Levels, OptionalImagesThatAreNotThereAreNotHandedOn) {
  const auto p = makeReady<Choosy>();
  p->set<attr::InImg>(constant(2));
  executeSyncRun(p);
  EXPECT_EQ(valueOf(p->getStorage<attr::OutImg>()), 1);
  p->set<attr::InOptMask>(constant(0));
  p->request<attr::OutOptImg>();
  executeSyncRun(p);
  EXPECT_EQ(valueOf(p->getStorage<attr::OutImg>()), 11);
  EXPECT_EQ(valueOf(p->getStorage<attr::OutOptImg>()), 111);
}

// --- Composites

/// Runs the window sum on its input, then on the result of that.
class Twice final : public imaproc::FilterClass<Twice, processor::BaseAsync2Processor> {
public:
  using Attributes =
      processor::AttributeList<attr::InImg, attr::OutImg, attr::InBorder, attr::InHalfKnlSizeX>;
  static constexpr auto toolTipId = eTestMessage::Steps;

private:
  processor::RulePtr createRule() const override { return imaproc::childAccepts<WindowSumLvl1>(*this); }
  BoolResult retrieveFirstProvider(const core::BasePriority&, Provider& provider) override {
    provider = imaproc::runChild<WindowSumLvl1>(*this);
    return true;
  }
  BoolResult retrieveSecondProvider(const core::BasePriority&, Provider& provider) override {
    const auto output = getStorage<attr::OutImg>();
    provider = imaproc::runChild<WindowSumLvl1>(*this, LevelImages({output}, {output}));
    return true;
  }
};

TEST(Composites, ChildrenRunOnTheImagesAndValuesOfTheComposite) {
  const auto in = randomImage({13, 6, 2}, image::eImageBufferType::Real32);
  const auto p = makeReady<Twice>();
  p->set<attr::InImg>(in);
  p->set<attr::InHalfKnlSizeX>(2);
  executeSyncRun(p);
  const auto once = sumOf(*in, image::eImageBufferType::Real32, 2);
  const auto expected = sumOf(*once, image::eImageBufferType::Real32, 2);
  forEachSample(in->getGeometry(), [&](auto... at) {
    ASSERT_NEAR(getSample(resultOf(*p), at...), getSample(*expected, at...), 2.0);
  });
}

TEST(Composites, WhatAChildRefusesIsRefusedBeforeAnyWork) {
  const auto p = makeReady<Twice>();
  p->set<attr::InImg>(randomImage({5, 4}, image::eImageBufferType::UInt8));
  p->set<attr::InHalfKnlSizeX>(1);
  const auto wrong = constant(3);
  p->set<attr::OutImg>(wrong);
  expectFailure({"Twice", "InImg", "OutImg", "differ in size"}, [&] { executeSyncRun(p); });
  EXPECT_EQ(valueOf(wrong), 3);
}

}  // namespace
}  // namespace vexo::test
