#include <gtest/gtest.h>

#include <boost/weak_ptr.hpp>
#include <tuple>

#include "VEXOProcessing/TestProcessors.h"

namespace {

using namespace vexo;
using namespace vexo::processor;
using namespace vexo::test;
namespace attr = vexo::test::attr;
using image::eImageBufferType;
using image::Image;
using image::ImageGeometry;

// --- Three levels
// ---------------------------------------------------------------------------------------------------

struct Halves {
  std::uint32_t x, y, z;
};
/// Axis of the cut, size, half window.
class WindowSum : public testing::TestWithParam<std::tuple<int, ImageGeometry, Halves>> {
protected:
  int axis() const { return std::get<0>(GetParam()); }
  ImageGeometry geometry() const { return std::get<1>(GetParam()); }
  Halves halves() const {
    Halves h = std::get<2>(GetParam());
    if (axis() != 2) h.z = 0;
    return h;
  }
  image::Border2dPolicy border() const {
    return {static_cast<image::eBorder>((axis() + geometry().x + halves().x) % 4), 5};
  }
  boost::shared_ptr<BaseProcessor> make(const boost::shared_ptr<const image::BaseImage>& in) const {
    const boost::shared_ptr<BaseProcessor> p = axis() == 0   ? WindowSumXLvl1::createBaseProcessor()
                                               : axis() == 1 ? WindowSumYLvl1::createBaseProcessor()
                                                             : WindowSumZLvl1::createBaseProcessor();
    p->init();
    p->set<attr::InImg>(in);
    p->set<attr::InHalfKnlSizeX>(halves().x);
    p->set<attr::InHalfKnlSizeY>(halves().y);
    p->set<attr::InHalfKnlSizeZ>(halves().z);
    p->set<attr::InBorder>(boost::make_shared<image::Border2dPolicy>(border()));
    return p;
  }
  boost::shared_ptr<Image> expected(const Image& in, eImageBufferType type) const {
    return naiveWindowSum(in, halves().x, halves().y, halves().z, border(), type);
  }
};
INSTANTIATE_TEST_SUITE_P(
    All, WindowSum,
    testing::Combine(testing::Range(0, 3),
                     testing::Values(ImageGeometry{1, 1}, ImageGeometry{23, 31},
                                     ImageGeometry{12, 7, 3, 2, 3}, ImageGeometry{5, 17, 22}),
                     testing::Values(Halves{0, 0, 0}, Halves{1, 1, 1}, Halves{3, 0, 2}, Halves{4, 6, 2})));

TEST_P(WindowSum, EqualsTheNaiveSumWithAnyNumberOfThreads) {
  const auto in = makeRandom(geometry(), eImageBufferType::Int32, 5);
  const auto wanted = expected(*in, eImageBufferType::Int32);
  const auto p = make(in);
  for (const std::size_t threads : {1, 2, 3, 7}) {
    p->setThreadLimit(threads);
    executeSyncRun(p);
    EXPECT_TRUE(sameSamples(image::hostImage(p->getStorage<attr::OutImg>(), "out"), *wanted))
        << threads << " threads";
    const auto both = makeCopy(*in);
    const auto inPlace = make(both);
    inPlace->set<attr::OutImg>(both);
    inPlace->setThreadLimit(threads);
    executeSyncRun(inPlace);
    EXPECT_TRUE(sameSamples(*both, *wanted)) << "in place, " << threads << " threads";
  }
}

TEST_P(WindowSum, ServesAllTypesAndStrides) {
  for (int type = 0; type < kernelTypeCount; ++type) {
    const auto in = makeRandom(geometry(), static_cast<eImageBufferType>(type), 6 + type);
    const auto out = type % 2 ? eImageBufferType::Real32 : eImageBufferType::UInt16;
    // Upside down, with a gap after each row, each slice and so on.
    const ImageGeometry g = geometry();
    const auto size = static_cast<std::ptrdiff_t>(image::getSampleSize(out));
    const std::ptrdiff_t y = size * static_cast<std::ptrdiff_t>(g.x + 3),
                         z = y * static_cast<std::ptrdiff_t>(g.y + 1),
                         c = z * static_cast<std::ptrdiff_t>(g.z) + y,
                         t = c * static_cast<std::ptrdiff_t>(g.c);
    std::vector<float> memory(static_cast<std::size_t>(t) * g.t + 100, -7.f);
    const auto before = memory;
    auto* const first =
        reinterpret_cast<unsigned char*>(memory.data()) + y * static_cast<std::ptrdiff_t>(g.y - 1);
    const auto image = Image::wrap(first, g, out, {-y, z, c, t});
    const auto p = make(in);
    p->set<attr::OutImg>(image);
    executeSyncRun(p);
    const auto wanted = expected(*in, out);
    EXPECT_TRUE(sameSamples(*image, *wanted)) << type;
    // What lies in the gaps is nobody's to write.
    const auto untouched = boost::make_shared<std::vector<float>>(before);
    const auto twin = Image::wrap(
        reinterpret_cast<unsigned char*>(untouched->data()) + y * static_cast<std::ptrdiff_t>(g.y - 1), g,
        out, {-y, z, c, t});
    image::copySamples(*wanted, *twin);
    EXPECT_EQ(std::memcmp(memory.data(), untouched->data(), memory.size() * sizeof(float)), 0) << type;
  }
}

TEST(WindowSumCall, SynchronousAndAsynchronous) {
  const auto in = makeRandom({20, 30, 2}, eImageBufferType::UInt16, 1);
  const auto wanted = naiveWindowSum(*in, 2, 1, 0, *image::mirorBorder2d(), eImageBufferType::UInt16);
  const boost::shared_ptr<const image::BaseImage> base = in;
  const auto sync =
      runCall<WindowSumYLvl1, attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ>(
          base, 2, 1, 0);
  EXPECT_TRUE(sameSamples(image::hostImage(sync->getStorage<attr::OutImg>(), "out"), *wanted));
  const auto async = startCall<WindowSumXLvl1, attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                               attr::InHalfKnlSizeZ>(base, 2, 1, 0);
  EXPECT_TRUE(sameSamples(image::hostImage(awaitOutput<attr::OutImg>(async), "out"), *wanted));
  EXPECT_TRUE(has(messageOf([&] { startCall<WindowSumXLvl1, attr::InImg>({}); }), "InImg"));
  EXPECT_TRUE(
      has(messageOf([&] { awaitOutput<attr::OutImg>(boost::shared_ptr<WindowSumXLvl1>()); }), "null"));
}

// --- Outputs
// --------------------------------------------------------------------------------------------------------

boost::shared_ptr<WindowSumYLvl1> makeSum(const boost::shared_ptr<const image::BaseImage>& in) {
  return prepareCall<WindowSumYLvl1, attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                     attr::InHalfKnlSizeZ>(in, 1, 1, 0);
}
boost::shared_ptr<Image> sumOf(const Image& in) {
  return naiveWindowSum(in, 1, 1, 0, *image::mirorBorder2d(), in.getBufferType());
}
const Image& resultOf(const BaseProcessor& p) {
  return image::hostImage(p.getStorage<attr::OutImg>(), "the result");
}

TEST(Output, IsCreatedLikeTheInput) {
  const auto p = makeEveryKind({6, 5, 4, 3, 2});
  const auto describe = [&] { return p->describeOutput(*p->accessAttribute<attr::OutRealImg>()); };
  EXPECT_EQ(describe().geometry, (ImageGeometry{6, 5, 4, 3, 2}));
  EXPECT_EQ(describe().type, eImageBufferType::Real32);
  EXPECT_TRUE(
      has(messageOf([&] { p->describeOutput(*p->accessAttribute<attr::OutOptImg>()); }), "OutOptImg"));
  executeSyncRun(p);
  const auto out = p->getStorage<attr::OutRealImg>();
  EXPECT_EQ(out->getGeometry(), (ImageGeometry{6, 5, 4, 3, 2}));
  EXPECT_EQ(out->getBufferType(), eImageBufferType::Real32);
  EXPECT_EQ(p->getStorage<attr::OutOptImg>(), nullptr) << "optional outputs are for the caller to ask for";
  EXPECT_EQ(p->getStorage<attr::InOutCounter>(), 1);
  const Image& in = image::hostImage(p->getStorage<attr::InImg>(), "in");
  double most = -1e9;
  forEachSample(in.getGeometry(), [&](auto... at) { most = std::max(most, getSample(in, at...)); });
  EXPECT_EQ(p->getStorage<attr::OutMaximum>(), most);
  const auto sum = makeSum(Image::create({7, 6, 5, 4, 3}, eImageBufferType::Int8));
  EXPECT_EQ(sum->describeOutput(*sum->accessAttribute<attr::OutImg>()).type, eImageBufferType::Int8);
  EXPECT_TRUE(
      has(messageOf([&] { makeReady<EveryKind>()->describeOutput(*p->accessAttribute<attr::OutWk2Img>()); }),
          "not be null"));
}

TEST(Output, OfASecondRunFitsItsInput) {
  const auto small = makeRandom({9, 8}, eImageBufferType::UInt16, 1);
  const auto large = makeRandom({11, 30, 2}, eImageBufferType::Real32, 2);
  const auto p = makeSum(small);
  executeSyncRun(p);
  const auto first = p->getStorage<attr::OutImg>();
  p->set<attr::InImg>(large);
  // The result of the first run binds neither the description nor the check of the second.
  EXPECT_EQ(p->describeOutput(*p->accessAttribute<attr::OutImg>()).geometry, large->getGeometry());
  EXPECT_NO_THROW(p->checkCall());
  executeSyncRun(p);
  EXPECT_TRUE(sameSamples(resultOf(*p), *sumOf(*large)));
  EXPECT_TRUE(sameSamples(image::hostImage(first, "first"), *sumOf(*small)))
      << "the first result is still whole";
}

TEST(Output, GivenByTheCallerIsUsedAgain) {
  const auto in = makeRandom({9, 8}, eImageBufferType::UInt16, 1), out = makeCopy(*in);
  for (const bool throughTheAttribute : {false, true}) {
    const auto p = makeSum(in);
    executeSyncRun(p);
    if (throughTheAttribute)
      p->accessAttribute<attr::OutImg>()->setImage(out);
    else
      p->set<attr::OutImg>(out);
    for (int run = 0; run < 2; ++run) {
      fillRandom(*out, 8);
      executeSyncRun(p);
      EXPECT_EQ(p->getStorage<attr::OutImg>(), out) << throughTheAttribute;
      EXPECT_TRUE(sameSamples(*out, *sumOf(*in))) << throughTheAttribute;
    }
  }
}

TEST(Output, OfTheRunBeforeIsUsedAgainWhenTheCallerGivesIt) {
  const auto in = makeRandom({9, 8}, eImageBufferType::UInt16, 1);
  const auto p = makeSum(in);
  executeSyncRun(p);
  const auto result = p->getStorage<attr::OutImg>();
  p->set<attr::OutImg>(result);
  fillRandom(image::hostImage(result, "result"), 8);
  executeSyncRun(p);
  EXPECT_EQ(p->getStorage<attr::OutImg>(), result);
  EXPECT_TRUE(sameSamples(image::hostImage(result, "result"), *sumOf(*in)));
}

TEST(Output, OfTheWrongSizeIsRefusedUntouched) {
  const auto in = makeRandom({9, 8}, eImageBufferType::UInt16, 1);
  for (const ImageGeometry& g : {ImageGeometry{8, 8}, ImageGeometry{9, 9}, ImageGeometry{9, 8, 2}}) {
    const auto out = makeRandom(g, eImageBufferType::UInt16, 2), before = makeCopy(*out);
    const auto p = makeSum(in);
    p->set<attr::OutImg>(out);
    const std::string why = messageOf([&] { executeSyncRun(p); });
    EXPECT_TRUE(has(why, "WindowSumYLvl1") && has(why, toString(g)) && has(why, "9 x 8")) << why;
    EXPECT_FALSE(p->getResult());
    EXPECT_TRUE(sameSamples(*out, *before));
    EXPECT_EQ(p->getStorage<attr::OutImg>(), out) << "what the caller gave stays";
  }
}

TEST(Output, ThatOverlapsAnInputIsRefusedUnlessItIsTheInput) {
  const auto whole = makeRandom({9, 20}, eImageBufferType::UInt16, 1), before = makeCopy(*whole);
  const image::ImageStrides s = whole->getStrides();
  const auto in = Image::wrap(whole->getRow(0), {9, 8}, eImageBufferType::UInt16, s, whole);
  const auto p = makeSum(in);
  p->set<attr::OutImg>(Image::wrap(whole->getRow(1), {9, 8}, eImageBufferType::UInt16, s));
  const std::string why = messageOf([&] { executeSyncRun(p); });
  EXPECT_TRUE(has(why, "InImg") && has(why, "OutImg") && has(why, "overlap")) << why;
  EXPECT_TRUE(sameSamples(*whole, *before));
  const auto wanted = sumOf(*in);
  const auto below = Image::wrap(whole->getRow(8), {9, 8}, eImageBufferType::UInt16, s);
  p->set<attr::OutImg>(below);
  executeSyncRun(p);
  EXPECT_TRUE(sameSamples(*below, *wanted));
  p->set<attr::OutImg>(Image::wrap(whole->getRow(0), {9, 8}, eImageBufferType::UInt16, s));
  executeSyncRun(p);
  EXPECT_TRUE(sameSamples(*in, *wanted));
  // A second input that the first output would spoil.
  const auto kinds = makeEveryKind({9, 8});
  kinds->set<attr::OutRealImg>(Image::create({9, 8}, eImageBufferType::Real32));
  kinds->set<attr::InOptMask>(kinds->getStorage<attr::OutRealImg>()->getSubImage(0, 1, 0, 0));
  EXPECT_NO_THROW(kinds->checkCall());
  const auto& out = image::hostImage(kinds->getStorage<attr::OutRealImg>(), "out");
  kinds->set<attr::InOptMask>(
      Image::wrapConst(out.getRow(1), {9, 7}, eImageBufferType::Real32, out.getStrides()));
  EXPECT_TRUE(has(messageOf([&] { kinds->checkCall(); }), "InOptMask"));
}

TEST(Output, OfAFailedRunIsNotLeft) {
  const auto p = makeEveryKind();
  p->failAtEnd = true;
  EXPECT_TRUE(has(messageOf([&] { executeSyncRun(p); }), "failed at the end"));
  EXPECT_EQ(p->getStorage<attr::OutRealImg>(), nullptr);
  p->failAtEnd = false;
  executeSyncRun(p);
  EXPECT_NE(p->getStorage<attr::OutRealImg>(), nullptr);
  p->set<attr::OutRealImg>(Image::create({5, 4}, eImageBufferType::Real32));
  p->failAtEnd = true;
  EXPECT_FALSE(p->run(core::eSynchroType::Synchronous));
  EXPECT_NE(p->getStorage<attr::OutRealImg>(), nullptr) << "given by the caller";
}

TEST(Output, OfARunThatIsCancelledAtTheVeryEndIsNotLeft) {
  const auto p = makeReady<Steps1>();
  p->set<attr::InOptMask>(makeRandom({4, 3}, eImageBufferType::UInt8, 1));
  p->step = [](std::size_t) { return pieces(3, [](std::size_t) {}); };
  p->atEnd = [&p = *p] { p.cancel(); };
  const BoolResult result = p->run(core::eSynchroType::Synchronous);
  EXPECT_EQ(result.isOk(), p->getStorage<attr::OutImg>() != nullptr)
      << "either done, or cancelled without a result";
}

TEST(WorkImages, AreReleasedUnlessTheCallerSuppliedThem) {
  const auto p = makeEveryKind();
  const auto own = Image::create({5, 4}, eImageBufferType::Real32);
  for (const bool fails : {false, true}) {
    p->failAtEnd = fails;
    p->workImagesWereThere = false;
    EXPECT_EQ(p->run(core::eSynchroType::Synchronous).isOk(), !fails);
    EXPECT_TRUE(p->workImagesWereThere);
    EXPECT_EQ(p->getStorage<attr::OutWk2Img>(), nullptr);
    EXPECT_EQ(p->getStorage<attr::OutOptWk1Img>(), nullptr);
  }
  p->failAtEnd = false;
  p->set<attr::OutOptWk1Img>(own);
  executeSyncRun(p);
  EXPECT_EQ(p->getStorage<attr::OutOptWk1Img>(), own);
  EXPECT_EQ(p->getStorage<attr::OutWk2Img>(), nullptr);
}

TEST(CheckCall, NamesTheMissingInput) {
  const auto p = makeEveryKind();
  EXPECT_NO_THROW(p->checkCall());
  for (const char* name : {"InFlag", "InKnl", "InOutCounter", "InImg", "InOutImg"}) {
    const auto lacking = boost::static_pointer_cast<EveryKind>(p->duplicateShared());
    lacking->findAttribute(name)->clear();
    const std::string why = messageOf([&] { executeSyncRun(lacking); });
    EXPECT_TRUE(has(why, "EveryKind") && has(why, name)) << why;
  }
}

// --- Names, factory, copies
// -----------------------------------------------------------------------------------------

TEST(Factory, KnowsClassesWhileTheyAreRegistered) {
  const std::string name = "vexo::test::EveryKind";
  EXPECT_FALSE(ProcessorFactory::isRegistered(name));
  {
    const ProcessorRegistrator<EveryKind> registrator;
    EXPECT_TRUE(ProcessorFactory::isRegistered(name));
    const auto names = ProcessorFactory::getTypeNames();
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 1);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    const auto p = ProcessorFactory::createProcessor(name);
    EXPECT_NE(dynamic_cast<EveryKind*>(p.get()), nullptr);
    EXPECT_FALSE(p->isInitialised());
    EXPECT_NE(ProcessorFactory::createProcessor(name), p);
  }
  EXPECT_FALSE(ProcessorFactory::isRegistered(name));
  EXPECT_TRUE(has(messageOf([&] { ProcessorFactory::createProcessor(name); }), name));
}

TEST(ProcessorClass, NamesItself) {
  EXPECT_EQ(EveryKind::getTypeName(), "vexo::test::EveryKind");
  EXPECT_EQ(EveryKind().getObjectName(), "EveryKind");
  EXPECT_EQ(EveryKind().getToolTip(), "Has a parameter of every kind");
  EXPECT_EQ(EveryKind().getClassVersion(), 2u);
  EXPECT_EQ(WindowSumYLvl1().getClassVersion(), 1u);
  const std::unique_ptr<BaseDynamicObject> made(EveryKind().createNew());
  EXPECT_EQ(made->getClassName(), EveryKind::getTypeName());
  EXPECT_EQ(makeReady<WindowSumYLvl3>()->getDispatchPolicy().minStripLength, 5u);
  EXPECT_EQ(makeReady<EveryKind>()->getDispatchPolicy().minStripLength,
            ProcessorDispatchPolicy().minStripLength);
}

TEST(Copy, SharesValuesButNotResults) {
  const auto in = makeRandom({9, 8}, eImageBufferType::UInt16, 1),
             other = makeRandom({6, 30}, eImageBufferType::UInt16, 2);
  const auto p = makeSum(in);
  p->setThreadLimit(3);
  p->setPriority(core::ePriority::High);
  executeSyncRun(p);
  const auto result = p->getStorage<attr::OutImg>();
  const auto twin = boost::dynamic_pointer_cast<WindowSumYLvl1>(p->duplicateShared());
  ASSERT_TRUE(twin);
  EXPECT_EQ(twin->getStorage<attr::InImg>(), in);
  EXPECT_EQ(twin->getStorage<attr::OutImg>(), result);
  EXPECT_EQ(twin->getStorage<attr::InHalfKnlSizeX>(), 1u);
  EXPECT_EQ(twin->getThreadLimit(), 3u);
  EXPECT_EQ(twin->getPriority().getLevel(), core::ePriority::High);
  twin->set<attr::InImg>(other);
  executeSyncRun(twin);
  EXPECT_TRUE(sameSamples(resultOf(*twin), *sumOf(*other)));
  EXPECT_EQ(p->getStorage<attr::OutImg>(), result);
  EXPECT_TRUE(sameSamples(resultOf(*p), *sumOf(*in)));
  const std::unique_ptr<BaseDynamicObject> raw(p->duplicate());
  EXPECT_EQ(dynamic_cast<WindowSumYLvl1&>(*raw).getStorage<attr::InImg>(), in);
  EXPECT_TRUE(p->hasCopySupport());
}

TEST(Copy, OfAnotherClassIsRefused) {
  const auto p = makeSum(makeRandom({9, 8}, eImageBufferType::UInt16, 1));
  const auto before = p->getStorage<attr::InImg>();
  const BoolResult result = p->copy(*makeReady<WindowSumXLvl1>());
  EXPECT_FALSE(result);
  EXPECT_TRUE(has(result.getMessage(), "WindowSumXLvl1"));
  EXPECT_EQ(p->getStorage<attr::InImg>(), before);
  EXPECT_TRUE(p->copy(*p));
  EXPECT_EQ(p->getStorage<attr::InImg>(), before);
}

}  // namespace
