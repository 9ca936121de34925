#include <gtest/gtest.h>

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

constexpr auto u16 = eImageBufferType::UInt16;

/// Size and half window.
class WindowSum : public testing::TestWithParam<std::tuple<ImageGeometry, std::uint32_t>> {
protected:
  const ImageGeometry g = std::get<0>(GetParam());
  const std::uint32_t half = std::get<1>(GetParam());
  const image::Border2dPolicy border{static_cast<image::eBorder>((g.x + half) % 4), 5};

  boost::shared_ptr<WindowSumLvl1> make(const boost::shared_ptr<const image::BaseImage>& in) const {
    const auto p = makeSum(in, half);
    p->set<attr::InBorder>(boost::make_shared<image::Border2dPolicy>(border));
    return p;
  }
};
INSTANTIATE_TEST_SUITE_P(All, WindowSum,
                         testing::Combine(testing::Values(ImageGeometry{1, 1}, ImageGeometry{31, 23},
                                                          ImageGeometry{12, 7, 3, 2, 3},
                                                          ImageGeometry{57, 5, 2}),
                                          testing::Values(0, 1, 2, 5)));

TEST_P(WindowSum, EqualsTheNaiveSumWithAnyNumberOfThreads) {
  const auto in = rangeImage(g, eImageBufferType::Int32, 0, 9, 5);
  const auto wanted = sumOf(*in, eImageBufferType::Int32, half, border);
  const auto p = make(in);
  for (const std::size_t threads : {1, 2, 3, 7}) {
    p->setThreadLimit(threads);
    executeSyncRun(p);
    EXPECT_TRUE(sameBits(resultOf(*p), *wanted)) << threads << " threads";
    const auto both = copyOf(*in);
    const auto inPlace = make(both);
    inPlace->set<attr::OutImg>(both);
    inPlace->setThreadLimit(threads);
    executeSyncRun(inPlace);
    EXPECT_TRUE(sameBits(*both, *wanted)) << "in place, " << threads << " threads";
  }
}

TEST_P(WindowSum, ServesAllTypesAndStrides) {
  for (int type = 0; type < kernelTypeCount; ++type) {
    const auto in = rangeImage(g, static_cast<eImageBufferType>(type), 0, 9, 6 + type);
    const auto out = type % 2 ? eImageBufferType::Real32 : u16;
    const auto wanted = sumOf(*in, out, half, border);
    // Upside down, with a gap after each row, each slice and so on.
    const auto y = static_cast<std::ptrdiff_t>(image::getSampleSize(out) * (g.x + 3)),
               z = y * static_cast<std::ptrdiff_t>(g.y + 1), c = z * static_cast<std::ptrdiff_t>(g.z) + y,
               t = c * static_cast<std::ptrdiff_t>(g.c);
    std::vector<float> memory[2];
    boost::shared_ptr<Image> images[2];
    for (int i = 0; i < 2; ++i) {
      memory[i].assign(static_cast<std::size_t>(t) * g.t + 100, -7.f);
      auto* const first = reinterpret_cast<unsigned char*>(memory[i].data()) + y * std::ptrdiff_t(g.y - 1);
      images[i] = Image::wrap(first, g, out, {-y, z, c, t});
    }
    const auto p = make(in);
    p->set<attr::OutImg>(images[0]);
    executeSyncRun(p);
    EXPECT_TRUE(sameBits(*images[0], *wanted)) << type;
    // What lies in the gaps is nobody's to write.
    image::copySamples(*wanted, *images[1]);
    EXPECT_EQ(std::memcmp(memory[0].data(), memory[1].data(), memory[0].size() * sizeof(float)), 0) << type;
  }
}

TEST(Call, SynchronousAndAsynchronous) {
  const auto in = rangeImage({20, 30, 2}, u16, 0, 9, 1), wanted = sumOf(*in, u16);
  using Call = CallForms<WindowSumLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX>;
  const auto isWanted = [&](const boost::shared_ptr<image::BaseImage>& result) {
    return sameBits(image::hostImage(result, "out"), *wanted);
  };
  EXPECT_TRUE(isWanted(Call::run(in, 1)));
  EXPECT_TRUE(isWanted(Call::await(Call::start(in, 1))));
  const auto filled = Image::create(in->getGeometry(), u16), later = Image::create(in->getGeometry(), u16);
  Call::fill(in, 1, filled);
  EXPECT_TRUE(isWanted(filled));
  EXPECT_EQ(Call::await(Call::startFill(in, 1, later)), later);
  EXPECT_TRUE(isWanted(later));
  expectFailure({"InImg"}, [&] { Call::start({}, 1); });
  expectFailure({"null"}, [&] { Call::await({}); });
}

TEST(Output, IsCreatedLikeTheInput) {
  const auto p = makeEveryKind({6, 5, 4, 3, 2});
  const auto described = p->describeOutput(*p->accessAttribute<attr::OutRealImg>());
  EXPECT_EQ(described.geometry, (ImageGeometry{6, 5, 4, 3, 2}));
  EXPECT_EQ(described.type, eImageBufferType::Real32);
  expectFailure({"OutOptImg"}, [&] { p->describeOutput(*p->accessAttribute<attr::OutOptImg>()); });
  expectFailure({"not be null"},
                [&] { makeReady<EveryKind>()->describeOutput(*p->accessAttribute<attr::OutWk2Img>()); });
  executeSyncRun(p);
  const auto out = p->getStorage<attr::OutRealImg>();
  EXPECT_EQ(out->getGeometry(), described.geometry);
  EXPECT_EQ(out->getBufferType(), described.type);
  EXPECT_EQ(p->getStorage<attr::OutOptImg>(), nullptr) << "optional outputs are for the caller to ask for";
  EXPECT_EQ(p->getStorage<attr::InOutCounter>(), 1);
  const Image& in = image::hostImage(p->getStorage<attr::InImg>(), "in");
  double most = -1e9;
  forEachSample(in.getGeometry(), [&](auto... at) { most = std::max(most, getSample(in, at...)); });
  EXPECT_EQ(p->getStorage<attr::OutMaximum>(), most);
}

TEST(Output, OfASecondRunFitsItsInput) {
  const auto small = rangeImage({9, 8}, u16, 0, 9, 1);
  const auto large = rangeImage({11, 30, 2}, eImageBufferType::Real32, 0, 9, 2);
  const auto p = makeSum(small);
  executeSyncRun(p);
  const auto first = p->getStorage<attr::OutImg>();
  p->set<attr::InImg>(large);
  // The result of the first run binds neither the description nor the check of the second.
  EXPECT_EQ(p->describeOutput(*p->accessAttribute<attr::OutImg>()).geometry, large->getGeometry());
  EXPECT_NO_THROW(p->checkCall());
  executeSyncRun(p);
  EXPECT_TRUE(sameBits(resultOf(*p), *sumOf(*large, large->getBufferType())));
  EXPECT_TRUE(sameBits(image::hostImage(first, "first"), *sumOf(*small, small->getBufferType())))
      << "the first result is still whole";
}

TEST(Output, GivenByTheCallerIsUsedAgain) {
  const auto in = rangeImage({9, 8}, u16, 0, 9, 1), own = copyOf(*in);
  for (const char* how : {"set", "through the attribute", "result of the run before"}) {
    const auto p = makeSum(in);
    executeSyncRun(p);
    const boost::shared_ptr<image::BaseImage> out = *how == 'r' ? p->getStorage<attr::OutImg>() : own;
    if (*how == 't')
      p->accessAttribute<attr::OutImg>()->setImage(out);
    else
      p->set<attr::OutImg>(out);
    for (int run = 0; run < 2; ++run) {
      image::copySamples(*rangeImage({9, 8}, u16, 0, 9, 8), image::hostImage(out, "out"));
      executeSyncRun(p);
      EXPECT_EQ(p->getStorage<attr::OutImg>(), out) << how;
      EXPECT_TRUE(sameBits(resultOf(*p), *sumOf(*in, in->getBufferType()))) << how;
    }
  }
}

TEST(Output, OfTheWrongSizeIsRefusedUntouched) {
  const auto in = rangeImage({9, 8}, u16, 0, 9, 1);
  for (const ImageGeometry& g : {ImageGeometry{8, 8}, ImageGeometry{9, 9}, ImageGeometry{9, 8, 2}}) {
    const auto out = rangeImage(g, u16, 0, 9, 2), before = copyOf(*out);
    const auto p = makeSum(in);
    p->set<attr::OutImg>(out);
    expectFailure({"WindowSumLvl1", toString(g), "9 x 8"}, [&] { executeSyncRun(p); });
    EXPECT_FALSE(p->getResult());
    EXPECT_TRUE(sameBits(*out, *before));
    EXPECT_EQ(p->getStorage<attr::OutImg>(), out) << "what the caller gave stays";
  }
}

TEST(Output, ThatOverlapsAnInputIsRefusedUnlessItIsTheInput) {
  const auto whole = rangeImage({9, 20}, u16, 0, 9, 1), before = copyOf(*whole);
  const image::ImageStrides s = whole->getStrides();
  const auto in = Image::wrap(whole->getRow(0), {9, 8}, u16, s, whole);
  const auto p = makeSum(in);
  p->set<attr::OutImg>(Image::wrap(whole->getRow(1), {9, 8}, u16, s));
  expectFailure({"InImg", "OutImg", "overlap"}, [&] { executeSyncRun(p); });
  EXPECT_TRUE(sameBits(*whole, *before));
  const auto wanted = sumOf(*in, in->getBufferType());
  const auto below = Image::wrap(whole->getRow(8), {9, 8}, u16, s);
  p->set<attr::OutImg>(below);
  executeSyncRun(p);
  EXPECT_TRUE(sameBits(*below, *wanted));
  p->set<attr::OutImg>(Image::wrap(whole->getRow(0), {9, 8}, u16, s));
  executeSyncRun(p);
  EXPECT_TRUE(sameBits(*in, *wanted));
  // A second input that the first output would spoil.
  const auto kinds = makeEveryKind({9, 8});
  kinds->set<attr::OutRealImg>(Image::create({9, 8}, eImageBufferType::Real32));
  kinds->set<attr::InOptMask>(kinds->getStorage<attr::OutRealImg>()->getSubImage(0, 1, 0, 0));
  EXPECT_NO_THROW(kinds->checkCall());
  const auto& out = image::hostImage(kinds->getStorage<attr::OutRealImg>(), "out");
  kinds->set<attr::InOptMask>(
      Image::wrapConst(out.getRow(1), {9, 7}, eImageBufferType::Real32, out.getStrides()));
  expectFailure({"InOptMask"}, [&] { kinds->checkCall(); });
}

TEST(Output, OfAFailedRunIsNotLeft) {
  const auto p = makeEveryKind();
  p->failAtEnd = true;
  expectFailure({"failed at the end"}, [&] { executeSyncRun(p); });
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
  p->set<attr::InOptMask>(rangeImage({4, 3}, eImageBufferType::UInt8, 0, 9, 1));
  p->step = [](std::size_t) { return pieces(3, [](std::size_t) {}); };
  p->atEnd = [&p = *p] { p.cancel(); };
  const BoolResult result = p->run(core::eSynchroType::Synchronous);
  EXPECT_EQ(result.isOk(), p->getStorage<attr::OutImg>() != nullptr)
      << "either done, or cancelled without a result";
}

TEST(WorkImages, AreReleasedUnlessTheCallerSuppliedThem) {
  const auto p = makeEveryKind();
  for (const bool fails : {false, true}) {
    p->failAtEnd = fails;
    p->workImagesWereThere = false;
    EXPECT_EQ(p->run(core::eSynchroType::Synchronous).isOk(), !fails);
    EXPECT_TRUE(p->workImagesWereThere);
    EXPECT_EQ(p->getStorage<attr::OutWk2Img>(), nullptr);
    EXPECT_EQ(p->getStorage<attr::OutOptWk1Img>(), nullptr);
  }
  p->failAtEnd = false;
  const auto own = Image::create({5, 4}, eImageBufferType::Real32);
  p->set<attr::OutOptWk1Img>(own);
  executeSyncRun(p);
  EXPECT_EQ(p->getStorage<attr::OutOptWk1Img>(), own);
  EXPECT_EQ(p->getStorage<attr::OutWk2Img>(), nullptr);
}

TEST(Copy, SharesValuesButNotResults) {
  const auto in = rangeImage({9, 8}, u16, 0, 9, 1), other = rangeImage({6, 30}, u16, 0, 9, 2);
  const auto p = makeSum(in);
  p->setThreadLimit(3);
  p->setPriority(core::ePriority::High);
  executeSyncRun(p);
  const auto result = p->getStorage<attr::OutImg>();
  const auto twin = boost::dynamic_pointer_cast<WindowSumLvl1>(p->duplicateShared());
  ASSERT_TRUE(twin);
  EXPECT_EQ(twin->getStorage<attr::InImg>(), in);
  EXPECT_EQ(twin->getStorage<attr::OutImg>(), result);
  EXPECT_EQ(twin->getStorage<attr::InHalfKnlSizeX>(), 1u);
  EXPECT_EQ(twin->getThreadLimit(), 3u);
  EXPECT_EQ(twin->getPriority().getLevel(), core::ePriority::High);
  twin->set<attr::InImg>(other);
  executeSyncRun(twin);
  EXPECT_TRUE(sameBits(resultOf(*twin), *sumOf(*other, other->getBufferType())));
  EXPECT_EQ(p->getStorage<attr::OutImg>(), result);
  EXPECT_TRUE(sameBits(resultOf(*p), *sumOf(*in, in->getBufferType())));
  EXPECT_TRUE(p->copy(*p));
  EXPECT_TRUE(has(p->copy(*makeReady<Steps1>()).getMessage(), "Steps1"));
  EXPECT_EQ(p->getStorage<attr::InImg>(), in) << "copies of itself and of another class change nothing";
}

}  // namespace
