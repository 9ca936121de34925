// The means of planes and of volumes against one direct reference.

#include <numeric>

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothing3dImgLvl1.h"
#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::imaproc::filter {
namespace {

using namespace test;

constexpr auto uint8 = eImageBufferType::UInt8, real32 = eImageBufferType::Real32;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

enum class eKind { Planes, Volumes };
constexpr eKind kinds[] = {eKind::Planes, eKind::Volumes};

ImagePtr smooth(eKind kind, const ImagePtr& in, const Half& h, eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  const auto x = static_cast<std::uint32_t>(h.x), y = static_cast<std::uint32_t>(h.y);
  if (kind == eKind::Planes)
    meanSmoothing2dImg(in, x, y, out);
  else
    meanSmoothing3dImg(in, x, y, static_cast<std::uint32_t>(h.z), out);
  return out;
}

/// The mean in double, within the error of single-precision sums and of rounding: integer outputs of volumes
/// are rounded twice, each slice, then their mean.
void expectMean(eKind kind, const Image& in, const Image& out, const Half& h) {
  double allowed =
      3000.0 * 4 * static_cast<double>(in.getSizeX() + in.getSizeY() + in.getSizeZ()) / (1 << 24);
  if (kind == eKind::Volumes && out.getBufferType() != real32) allowed += 0.5;
  int failures = 0;
  forEachSample(in.getGeometry(), [&](auto... at) {
    const auto window = windowOf(in, h, at...);
    const double expected =
        std::accumulate(window.begin(), window.end(), 0.0) / static_cast<double>(window.size());
    if (!(distanceOnCircle(getSample(out, at...), expected, out.getBufferType()) <= allowed) &&
        failures++ < 3)
      ADD_FAILURE() << testing::PrintToString(std::array{at...}) << ": " << getSample(out, at...)
                    << " instead of " << expected;
  });
}

class MeanSmoothing : public testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, MeanSmoothing, testing::ValuesIn(allTypes()), TypeName());

TEST_P(MeanSmoothing, EveryOutputTypeAgreesWithTheDirectMean) {
  const ImagePtr plane = randomImage({45, 150}, GetParam());
  const ImagePtr volume = rangeImage({21, 14, 37}, GetParam(), 0, 100);  // whose slices nothing wraps in
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    expectMean(eKind::Planes, *plane, *smooth(eKind::Planes, plane, {3, 2}, type), {3, 2});
    expectMean(eKind::Volumes, *volume, *smooth(eKind::Volumes, volume, {2, 1, 2}, type), {2, 1, 2});
  }
}

// What the rounding of single precision leaves of a constant: nothing in integers that hold few digits.
TEST_P(MeanSmoothing, AConstantImageStaysConstant) {
  const ImagePtr in = constantImage({70, 90}, GetParam(), 113);
  for (const int half : {0, 1, 5, 40})
    for (const auto type : allTypes())
      expectSamples(
          *smooth(eKind::Planes, in, {half, half}, type), [](auto...) { return 113; },
          type == real32 ? 113 * 1e-5 : 0);
}

// Each width, tiles of columns, windows of many periods of the mirrored image.
TEST(MeanSmoothingSizes, AgreeWithTheDirectMean) {
  struct Shape {
    eKind kind;
    ImageGeometry g;
    Half h;
  };
  const eKind planes = eKind::Planes, volumes = eKind::Volumes;
  std::vector<Shape> shapes = {{planes, {1, 1}, {7, 9}},          {planes, {1, 40}, {2, 3}},
                               {planes, {40, 1}, {2, 3}},         {planes, {5, 4}, {13, 11}},
                               {planes, {3, 200}, {1, 70}},       {planes, {3001, 20}, {0, 1}},
                               {planes, {3001, 20}, {40, 1}},     {volumes, {1, 1, 1}, {3, 2, 4}},
                               {volumes, {17, 9, 1}, {1, 1, 3}},  {volumes, {1, 9, 17}, {2, 1, 3}},
                               {volumes, {17, 1, 9}, {1, 2, 3}},  {volumes, {6, 5, 7}, {7, 6, 19}},
                               {volumes, {5, 4, 40}, {0, 0, 3}},  {volumes, {1100, 3, 5}, {1, 1, 1}},
                               {volumes, {40, 30, 20}, {2, 3, 0}}};
  for (std::size_t width = 1; width <= 70; ++width)
    shapes.push_back({planes, {width, 9}, {1 + static_cast<int>(width % 6), 2}});
  for (const Shape& s : shapes)
    for (const auto type : {uint8, real32}) {
      SCOPED_TRACE(toString(s.g));
      const ImagePtr in = rangeImage(s.g, type, 0, 100);
      expectMean(s.kind, *in, *smooth(s.kind, in, s.h, type), s.h);
    }
}

// No more work than a window of the size of the image.
TEST(MeanSmoothingSizes, TheLargestWindowsGiveTheMeanAlongTheAxis) {
  const ImagePtr in = randomImage({5, 3}, uint8);
  for (const int hx : {0, 32767})
    for (const int hy : {0, 32767})
      expectSamples(
          *smooth(eKind::Planes, in, {hx, hy}, real32),
          [&](auto x, auto y, auto...) {
            double sum = 0, count = 0;
            forEachSample(in->getGeometry(), [&](auto u, auto v, auto...) {
              if ((hx == 0 && u != x) || (hy == 0 && v != y)) return;
              sum += getSample(*in, u, v);
              ++count;
            });
            return sum / count;
          },
          0.05);
}

TEST(MeanSmoothingValues, ConvertByTheWrapRule) {
  const float inf = std::numeric_limits<float>::infinity();
  const struct {
    float value;
    double u8, i8, u16, i16, u32, i32;
  } table[] = {{300.2f, 44, 44, 300, 300, 300, 300},
               {2.5f, 3, 3, 3, 3, 3, 3},
               {-2.5f, 253, -3, 65533, -3, 4294967293.0, -3},
               {0.49999997f, 0, 0, 0, 0, 0, 0},
               {-0.5f, 255, -1, 65535, -1, 4294967295.0, -1},
               {8388609.f, 1, 1, 1, 1, 8388609, 8388609},
               {3e9f, 255, -1, 65535, -1, 3000000000.0, 3000000000.0 - 4294967296.0},
               {-3e9f, 0, 0, 0, 0, 4294967296.0 - 3000000000.0, 4294967296.0 - 3000000000.0},
               {1e30f, 255, -1, 65535, -1, 4294967295.0, -1},
               {inf, 255, -1, 65535, -1, 4294967295.0, -1},
               {-inf, 0, 0, 0, 0, 0, 0},
               {static_cast<float>(nan), 0, 0, 0, 0, 0, 0}};
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    for (const auto& row : table) {
      SCOPED_TRACE(core::toString(sets.getSets()) + " " + std::to_string(row.value));
      // Wide enough for a vector of every width and a tail; neighbours of very different size must not
      // matter.
      const ImagePtr in =
          makeImage({37, 3}, real32, [&](auto x, auto y, auto...) { return (x + y) % 2 ? row.value : 1e8; });
      const double expected[] = {row.u8, row.i8, row.u16, row.i16, row.u32, row.i32};
      for (std::size_t i = 0; i < 6; ++i) {
        const ImagePtr out = smooth(eKind::Planes, in, {0, 0}, allTypes()[i]);
        expectSamples(*out, [&](auto x, auto y, auto... at) {
          return (x + y) % 2 ? expected[i] : getSample(*out, x, y, at...);
        });
      }
      EXPECT_TRUE(sameBits(*smooth(eKind::Planes, in, {0, 0}, real32), *in));
    }
  }
}

TEST(MeanSmoothingValues, NanSpreadsToTheRightDownAndBackwardOnly) {
  for (const eKind kind : kinds) {
    const ImagePtr in = randomImage({60, 50, 40}, real32);
    const Half h = {2, 3, kind == eKind::Planes ? 0 : 1};
    const ImagePtr clean = smooth(kind, in, h, real32);
    setSample(*in, nan, 30, 20, 20);
    for (const auto& sets : offeredSets()) {
      const ForcedSets forced(sets);
      const ImagePtr out = smooth(kind, in, h, real32);
      expectSamples(*out, [&](auto x, auto y, auto z, auto...) {
        const auto first = 20 - static_cast<std::size_t>(h.z), last = 20 + static_cast<std::size_t>(h.z);
        const bool reaches = x >= 28 && y >= 17 && z >= first && (kind == eKind::Volumes || z <= last);
        if (!reaches) return getSample(*clean, x, y, z);
        return x <= 32 && y <= 23 && z <= last ? nan : getSample(*out, x, y, z);
      });
    }
  }
}

TEST(MeanSmoothing3d, WithoutZItIsTheFilterOfPlanes) {
  const ImagePtr in = randomImage({40, 30, 20}, real32);
  EXPECT_TRUE(sameBits(*smooth(eKind::Volumes, in, {2, 3, 0}, eImageBufferType::Int16),
                       *smooth(eKind::Planes, in, {2, 3}, eImageBufferType::Int16)));
  EXPECT_TRUE(sameBits(*smooth(eKind::Volumes, in, {0, 0, 0}, real32), *in));
}

TEST(MeanSmoothing3d, IntegerOutputsAreRoundedBeforeAndAfterZ) {
  const ImagePtr in =
      makeImage({2, 1, 3}, real32, [](auto, auto, auto z, auto...) { return z == 1 ? 300.2 : 0.4; });
  // Slices become 0, 44 and 0; the mean of the middle is 14.67, that of the first (0 + 0 + 44) / 3.
  expectSamples(*smooth(eKind::Volumes, in, {1, 0, 1}, uint8), [](auto...) { return 15; });
}

// The second level can be made by name; it must not trust what it is given.
TEST(MeanSmoothing2d, LowerLevelsCheckTheirOwnCalls) {
  const auto plane =
      processor::ProcessorFactory::createProcessor("vexo::imaproc::filter::MeanSmoothing2dImgLvl2");
  for (const auto policy :
       {processor::eProcessorRulePolicy::WithRules, processor::eProcessorRulePolicy::WithoutRules}) {
    plane->init(policy);
    plane->set<attr::InSubImg2d>(randomImage({64, 64}, uint8));
    plane->set<attr::InHalfKnlSizeX>(1);
    plane->set<attr::InHalfKnlSizeY>(1);
    const ImagePtr narrow = randomImage({8, 64}, uint8), before = copyOf(*narrow);
    plane->set<attr::OutImg>(narrow);
    EXPECT_THROW(executeSyncRun(plane), BaseException);
    EXPECT_TRUE(sameBits(*narrow, *before));
  }
}

}  // namespace
}  // namespace vexo::imaproc::filter
