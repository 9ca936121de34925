// The medians that choose among the others: what they say that they run, and the pixels, against references
// that do not know the choice.
#include "VEXOIPL/VEXOIPLFiltering/Processor/Median2dImg/Median2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/MedianReference.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Median3dImg/Median3dImgLvl1.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;
using OutPtr = boost::shared_ptr<image::BaseImage>;
using Flag = attr::InOutOptAllow8bitsCompression;
constexpr auto U8 = eImageBufferType::UInt8, I8 = eImageBufferType::Int8, U16 = eImageBufferType::UInt16,
               I16 = eImageBufferType::Int16, U32 = eImageBufferType::UInt32, I32 = eImageBufferType::Int32,
               F32 = eImageBufferType::Real32;

/// Half size along Z of the 2d median.
constexpr int planes = -1;

/// Random samples of a range, both ends among them; floats have fractions.
ImagePtr imageOf(const ImageGeometry& geometry, eImageBufferType type, double low, double high) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> value(low, high);
  const ImagePtr result = makeImage(geometry, type, [&](auto...) {
    const double v = value(random);
    return type == F32 ? v : std::round(v);
  });
  setSample(*result, low, 0, geometry.y - 1);
  setSample(*result, high, geometry.x - 1, 0);
  return result;
}

/// The middle of the sorted window, or where it `compresses` of the levels of its samples over the range of
/// the whole image; a window with NaN is left out unless it has levels.
void expectMedian(const Image& in, const Image& out, const Half& h, bool compresses) {
  double low = INFINITY, high = -INFINITY;
  forEachSample(in.getGeometry(), [&](auto... at) {
    low = std::fmin(low, getSample(in, at...));
    high = std::fmax(high, getSample(in, at...));
  });
  expectSamples(out, [&](auto... at) {
    std::vector<double> window = windowOf(in, {h.x, h.y, std::max(h.z, 0)}, at...);
    if (compresses)
      for (double& v : window) v = std::isnan(v) ? 0 : std::trunc((v - low) * (256 / (high - low + 1)));
    if (std::any_of(window.begin(), window.end(), [](double v) { return std::isnan(v); }))
      return getSample(out, at...);
    double expected = middleOf(window);
    if (compresses) expected = low + expected * (high - low + 1) / 256;
    if (compresses) expected = in.getBufferType() == F32 ? double(float(expected)) : std::trunc(expected);
    return converted(expected, out.getBufferType());
  });
}

std::vector<std::string> childrenOf(const processor::ChoiceColl& choices) {
  std::vector<std::string> children;
  for (const auto& [child, reason] : choices) {
    children.push_back(child);
    EXPECT_FALSE(reason.empty());
    EXPECT_EQ(reason.find("Lvl"), std::string::npos) << "only the chosen child is named: " << reason;
  }
  return children;
}

struct Answer {
  processor::ChoiceColl before, after;
  bool flag;
};
Answer run(const ImagePtr& in, Half h, bool allowed, const OutPtr& out) {
  const auto ask = [&](const auto& p) {
    p->template set<Flag>(allowed);
    p->template set<attr::OutImg>(out);
    const processor::ChoiceColl before = p->explain();
    processor::executeSyncRun(p);
    return Answer{before, p->explain(), p->template getStorage<Flag>()};
  };
  if (h.z < 0)
    return ask(
        processor::prepareCall<Median2dImgLvl1, attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY>(
            in, static_cast<std::uint32_t>(h.x), static_cast<std::uint32_t>(h.y)));
  return ask(processor::prepareCall<Median3dImgLvl1, attr::InImg3d, attr::InHalfKnlSizeX,
                                    attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ>(
      in, static_cast<std::uint32_t>(h.x), static_cast<std::uint32_t>(h.y), static_cast<std::uint32_t>(h.z)));
}

/// A call, what it must run, how many of these choices the attributes decide, and the flag that comes back.
struct Case {
  eImageBufferType type;
  std::size_t width;
  double low, high;
  Half half;
  bool allowed;
  std::vector<std::string> children;
  std::size_t foreseen;
  bool compresses, flag;
};

const std::string stats = "StatsMsrLvl1", o1 = "HistoO1Median2dImgLvl1",
                  xStrip = "HistoO1MedianXStrip2dImgLvl1", g2 = "GenericMedian2dImgLvl1",
                  g3 = "GenericMedian3dImgLvl1", h3 = "HistoMedian3dImgLvl1";
const std::vector<std::string> k33 = {"K33Median2dImgLvl1"}, k55 = {"K55Median2dImgLvl1"};

const std::vector<Case> cases = {
    {U8, 40, 0, 255, {1, 1, planes}, false, k33, 1, false, false},
    {F32, 40, 0, 10, {1, 1, planes}, true, k33, 1, false, true},
    {U16, 1000, 0, 65535, {2, 2, planes}, true, k55, 1, false, true},
    {F32, 40, -5, 5, {2, 2, planes}, false, k55, 1, false, false},
    // Only equal half sizes have a kernel of their own.
    {U8, 40, 0, 255, {1, 2, planes}, false, {stats, o1}, 2, false, false},
    {I8, 40, -128, 127, {2, 1, planes}, true, {stats, o1}, 2, false, true},
    {U16, 40, 5, 90, {0, 0, planes}, false, {stats, o1}, 1, false, false},
    {I32, 40, -70000, 70000, {0, 0, planes}, false, {stats, g2}, 1, false, false},
    // The largest exact range, the one that passes although it is compressed, the first that does not pass.
    {U16, 40, 1000, 1255, {3, 2, planes}, false, {stats, o1}, 1, false, false},
    {U16, 40, 0, 256, {3, 2, planes}, false, {stats, o1}, 1, true, false},
    {U16, 40, 0, 257, {3, 2, planes}, false, {stats, g2}, 1, false, false},
    {I16, 40, -200, 55, {3, 2, planes}, true, {stats, o1}, 2, false, true},
    {I16, 40, -200, 56, {3, 2, planes}, true, {stats, o1}, 2, true, true},
    {I16, 40, -200, 57, {3, 2, planes}, true, {stats, o1}, 2, true, true},
    {U32, 40, 4294967040, 4294967295, {1, 3, planes}, false, {stats, o1}, 1, false, false},
    {I32, 40, -2147483648.0, 2147483647, {1, 3, planes}, true, {stats, o1}, 2, true, true},
    // The width.
    {U8, 999, 0, 255, {3, 1, planes}, false, {stats, o1}, 2, false, false},
    {U8, 1000, 0, 255, {3, 1, planes}, false, {stats, xStrip}, 2, false, false},
    {U16, 999, 0, 9000, {3, 1, planes}, true, {stats, o1}, 2, true, true},
    {F32, 1000, -3, 700, {3, 1, planes}, true, {stats, xStrip}, 2, true, true},
    {I16, 1000, -4, 252, {3, 1, planes}, false, {stats, xStrip}, 1, true, false},
    {I16, 1000, -4, 253, {3, 1, planes}, false, {stats, g2}, 1, false, false},
    // A float never fits.
    {F32, 40, 0, 10, {3, 2, planes}, false, {stats, g2}, 2, false, false},
    {F32, 40, 0, 10, {3, 2, planes}, true, {stats, o1}, 2, true, true},
    {F32, 40, -300.25, 1000.5, {1, 2, planes}, true, {stats, o1}, 2, true, true},
    // Volumes.
    {U8, 20, 0, 255, {1, 1, 1}, true, {g3}, 1, false, true},
    {F32, 20, 0, 255, {1, 1, 1}, false, {g3}, 1, false, false},
    {U8, 20, 0, 255, {1, 1, 0}, false, {stats, h3}, 2, false, false},
    {I8, 20, -128, 127, {2, 2, 2}, true, {stats, h3}, 2, false, false},
    {U16, 1000, 1000, 1255, {0, 1, 1}, false, {stats, h3}, 1, false, false},
    {I16, 20, -6, 250, {1, 2, 1}, true, {stats, h3}, 2, true, false},
    {U32, 20, 7, 264, {1, 2, 1}, true, {stats, h3}, 2, true, true},
    {I32, 20, 7, 264, {1, 2, 1}, false, {stats, g3}, 1, false, false},
    {F32, 20, 0, 10, {0, 0, 0}, false, {stats, g3}, 2, false, false},
    {F32, 20, 0, 10, {1, 2, 1}, true, {stats, h3}, 2, true, true}};

class MedianChoice : public ::testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(All, MedianChoice, ::testing::Range(std::size_t{0}, cases.size()));

TEST_P(MedianChoice, IsToldAndGivesTheMedianInAnyTypeAndInPlace) {
  const Case& c = cases[GetParam()];
  const ImageGeometry geometry = {c.width, 6, std::size_t(c.half.z < 0 ? 1 : 5), 2};
  const ImagePtr in = imageOf(geometry, c.type, c.low, c.high);
  for (const auto type : {c.type, U8, F32}) {
    const ImagePtr out = Image::create(geometry, type);
    const Answer told = run(in, c.half, c.allowed, out);
    EXPECT_EQ(childrenOf(told.after), c.children);
    EXPECT_EQ(childrenOf(told.before),
              std::vector<std::string>(c.children.begin(), c.children.begin() + std::ptrdiff_t(c.foreseen)));
    EXPECT_EQ(told.flag, c.flag);
    expectMedian(*in, *out, c.half, c.compresses);
    if (type != c.type) continue;
    const ImagePtr both = copyOf(*in);
    EXPECT_EQ(childrenOf(run(both, c.half, c.allowed, both).after), c.children);
    EXPECT_TRUE(sameBits(*both, *out)) << "in place";
  }
}

TEST(MedianChoiceReasons, AreFactsAboutTheCall) {
  const auto reasons = [](eImageBufferType type, double high, std::size_t width, Half h, bool allowed) {
    const ImagePtr in = imageOf({width, 2}, type, 0, high);
    std::string text;
    for (const auto& [child, reason] : run(in, h, allowed, Image::create(in->getGeometry(), type)).after)
      text += reason + "\n";
    return text;
  };
  const std::string measured = "for half sizes 1 and 2 the range of the samples decides\n";
  EXPECT_EQ(reasons(U8, 255, 9, {1, 1, planes}, false), "both half sizes are 1\n");
  EXPECT_EQ(reasons(U8, 255, 999, {1, 2, planes}, false),
            measured + "the range 0 to 255 fits 256 levels, and the image is 999 columns wide, under 1000\n");
  EXPECT_EQ(
      reasons(U16, 256, 1000, {1, 2, planes}, false),
      measured +
          "the range 0 to 256 fits 256 levels, which its 257 values share, and the image is 1000 columns "
          "wide, over 999\n");
  EXPECT_EQ(reasons(U16, 257, 9, {1, 2, planes}, false),
            measured + "the range 0 to 257 does not fit 256 levels, and compression is not allowed\n");
  EXPECT_EQ(reasons(F32, 10, 9, {1, 2, planes}, false),
            measured + "the samples are 32-bit float, and compression is not allowed\n");
  EXPECT_EQ(reasons(F32, 10, 9, {1, 2, 0}, true),
            "for half sizes 1, 2 and 0 the range of the samples decides\n"
            "compression to 256 levels is allowed\n");
}

// The range is that of all planes together: 0 to 300, or 0 to 200, whatever the range of each.
TEST(MedianChoicePlanes, AreMeasuredTogether) {
  for (const double offset : {200, 100}) {
    const ImagePtr in = imageOf({30, 8, 2, 1, 2}, I32, 0, 100);
    for (std::size_t y = 0; y < 8; ++y)
      for (std::size_t x = 0; x < 30; ++x) setSample(*in, offset + getSample(*in, x, y), x, y, 1, 0, 1);
    const bool fits = offset == 100;
    for (const Half h : {Half{2, 1, planes}, Half{2, 1, 1}}) {
      const ImagePtr out = Image::create(in->getGeometry(), I32);
      const std::string last = h.z < 0 ? fits ? o1 : g2 : fits ? h3 : g3;
      EXPECT_EQ(childrenOf(run(in, h, false, out).after), (std::vector<std::string>{stats, last}));
      expectMedian(*in, *out, h, false);
    }
  }
}

TEST(MedianChoiceFloats, NanAndInfinitiesAreSafe) {
  for (const Half h :
       {Half{1, 1, planes}, Half{2, 2, planes}, Half{3, 1, planes}, Half{1, 1, 1}, Half{2, 1, 1}})
    for (const bool infinite : {false, true})
      for (const bool allowed : {false, true}) {
        const ImagePtr in = imageOf({60, 20, 3}, F32, -50, 50);
        std::mt19937 random(5);
        forEachSample(in->getGeometry(), [&](auto... at) {
          if (random() % 60 == 0) setSample(*in, random() % 2 ? NAN : -NAN, at...);
          if (infinite && random() % 20 == 0) setSample(*in, random() % 2 ? INFINITY : -INFINITY, at...);
        });
        const ImagePtr out = Image::create(in->getGeometry(), F32);
        const bool compresses = run(in, h, allowed, out).after.back().child.rfind("Histo", 0) == 0;
        // Of levels over an infinite range nothing is promised but that there are results.
        if (!compresses || !infinite) expectMedian(*in, *out, h, compresses);
        const ImagePtr nothing = Image::create({9, 9}, F32);
        forEachSample(nothing->getGeometry(), [&](auto... at) { setSample(*nothing, NAN, at...); });
        run(nothing, h, allowed, nothing);
      }
}

/// The forms that allow compression to 256 levels give the result, and whether it was needed.
template <class Allowing, class AllowingAsync, class... HalfSizes>
void expectForms(const ImagePtr& in, const Half& h, bool flag, Allowing allowing, AllowingAsync allowingAsync,
                 HalfSizes... halves) {
  const ImagePtr out = copyOf(*in);
  EXPECT_EQ(allowing(in, halves..., out), flag);
  expectMedian(*in, *out, h, in->getBufferType() == F32);
  image::copySamples(*in, *out);
  const auto running = allowingAsync(in, halves..., out);
  EXPECT_EQ(getAsyncProcessorOutput(running), out);
  expectMedian(*in, *out, h, in->getBufferType() == F32);
  EXPECT_EQ(running->template getStorage<Flag>(), flag);
}

TEST(MedianCalls, ThatAllowCompressionReturnTheFlag) {
  for (const auto type : {U8, F32}) {
    const ImagePtr in = imageOf({40, 9, 4}, type, 0, 255);
    expectForms(
        in, {3, 1, planes}, true, [](auto... a) { return median2dImg_allow8bitsCompression(a...); },
        [](auto... a) { return median2dImg_allow8bitsCompression_async(a...); }, 3u, 1u);
    expectForms(
        in, {1, 2, 1}, type == F32, [](auto... a) { return median3dImg_allow8bitsCompression(a...); },
        [](auto... a) { return median3dImg_allow8bitsCompression_async(a...); }, 1u, 2u, 1u);
    // Without permission a flag is set where the range was measured, by the run alone.
    const auto running = median3dImg_async(in, 1, 2, 1);
    getAsyncProcessorOutput(running);
    EXPECT_EQ(running->accessAttribute<Flag>()->isSet(), type == U8);
  }
}

TEST(MedianRuns, OfOneProcessorChooseAnew) {
  const auto p = processor::prepareCall<Median3dImgLvl1, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                        attr::InHalfKnlSizeZ, Flag>(1, 1, 1, true);
  const auto runOn = [&](const ImagePtr& in, Half h, bool compresses,
                         const std::vector<std::string>& children) {
    p->set<attr::InImg3d>(in);
    p->set<attr::InHalfKnlSizeZ>(static_cast<std::uint32_t>(h.z));
    for (int again = 0; again < 2; ++again) {
      processor::executeSyncRun(p);
      EXPECT_EQ(childrenOf(p->explain()), children);
      expectMedian(*in, image::hostImage(p->getStorage<attr::OutImg>(), "out"), h, compresses);
    }
  };
  const ImagePtr byte = imageOf({20, 9, 4}, U8, 0, 255), word = imageOf({15, 5, 3}, U16, 0, 900);
  runOn(word, {1, 1, 2}, true, {stats, h3});
  runOn(word, {1, 1, 1}, false, {g3});
  EXPECT_TRUE(p->getStorage<Flag>());
  runOn(byte, {1, 1, 2}, false, {stats, h3});
  // What a run has found about one image holds as permission for the next.
  EXPECT_FALSE(p->getStorage<Flag>());
  runOn(word, {1, 1, 2}, false, {stats, g3});
}

// What a child refuses is told as it is, and the choice is told too.
TEST(MedianFailures, OfChildrenAreTold) {
  const ImagePtr in = imageOf({20, 10}, U16, 0, 999), out = copyOf(*in);
  const auto running = median3dImg_async(in, 2000, 2000, 2000, out);
  expectFailure({"more than 4294967295 samples"}, [&] { getAsyncProcessorOutput(running); });
  EXPECT_EQ(childrenOf(running->explain()), (std::vector<std::string>{stats, g3}));
  EXPECT_TRUE(sameBits(*out, *in));
}

}  // namespace
}  // namespace vexo::imaproc::filter
