// The medians that compare values: of 3 x 3, 5 x 5 and any number of samples.
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/MedianReference.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl1.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;

enum class eMedian { K33, K55, Generic2d, Generic3d };
struct Median {
  eMedian kind;
  Half half;
};
std::string labelOf(const Median& m) {
  static const char* const names[] = {"K33", "K55", "Generic2d", "Generic3d"};
  return names[static_cast<int>(m.kind)] + std::string("_") + std::to_string(m.half.x) +
         std::to_string(m.half.y) + std::to_string(m.half.z);
}
const std::vector<Median> medians = {
    {eMedian::K33, {1, 1}},          {eMedian::K55, {2, 2}},
    {eMedian::Generic2d, {3, 0}},    {eMedian::Generic2d, {0, 0}},
    {eMedian::Generic2d, {2, 4}},    {eMedian::Generic2d, {9, 6}},  // more samples than 8 bits count
    {eMedian::Generic3d, {1, 1, 1}}, {eMedian::Generic3d, {2, 0, 1}},
    {eMedian::Generic3d, {0, 2, 2}}, {eMedian::Generic3d, {0, 3, 0}},
};

void fill(const Median& m, const ImagePtr& in, const ImagePtr& out) {
  const auto x = static_cast<std::uint32_t>(m.half.x), y = static_cast<std::uint32_t>(m.half.y),
             z = static_cast<std::uint32_t>(m.half.z);
  if (m.kind == eMedian::K33) return k33Median2dImg(in, out);
  if (m.kind == eMedian::K55) return k55Median2dImg(in, out);
  if (m.kind == eMedian::Generic2d) return genericMedian2dImg(in, x, y, out);
  genericMedian3dImg(in, x, y, z, out);
}
ImagePtr run(const Median& m, const ImagePtr& in, eImageBufferType type) {
  const ImagePtr out = Image::create(in->getGeometry(), type);
  fill(m, in, out);
  return out;
}
ImagePtr reference(const Median& m, const Image& in, eImageBufferType type) {
  return makeImage(in.getGeometry(), type,
                   [&](auto... at) { return converted(middleOf(windowOf(in, m.half, at...)), type); });
}
/// On every instruction set.
void expectMedian(const Median& m, const ImagePtr& in, eImageBufferType type) {
  const ImagePtr expected = reference(m, *in, type);
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    EXPECT_TRUE(sameBits(*run(m, in, type), *expected))
        << core::toString(sets.getSets()) << " to " << image::toString(type) << ", "
        << toString(in->getGeometry());
  }
}

class Medians : public testing::TestWithParam<std::tuple<std::size_t, eImageBufferType>> {
protected:
  const Median& median() const { return medians[std::get<0>(GetParam())]; }
  eImageBufferType type() const { return std::get<1>(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(All, Medians,
                         testing::Combine(testing::Range(std::size_t{0}, medians.size()),
                                          testing::ValuesIn(allTypes())),
                         [](const auto& info) {
                           return labelOf(medians[std::get<0>(info.param)]) + "_" +
                                  image::toString(std::get<1>(info.param));
                         });

TEST_P(Medians, EveryOutputTypeAgreesWithSorting) {
  const ImagePtr in = wideImage({75, 21, 2, 2, 1}, type());
  for (const auto out : allTypes()) expectMedian(median(), in, out);
}

// Each window size against each row and column of a narrow image; and strips and tiles.
TEST_P(Medians, NarrowTinyAndLargeImages) {
  std::vector<ImageGeometry> shapes = {{1, 1}, {1, 7}, {40, 1}, {2, 3, 2}, {2100, 3}, {50, 333}};
  const std::size_t step = median().half.x > 2 ? 7 : 1;
  for (std::size_t width = 1; width <= 70; width += step) shapes.push_back({width, 3 + width % 4});
  for (const ImageGeometry& shape : shapes) expectMedian(median(), wideImage(shape, type(), 3), type());
}

class MedianKinds : public testing::TestWithParam<Median> {};
INSTANTIATE_TEST_SUITE_P(All, MedianKinds, testing::ValuesIn(medians),
                         [](const auto& info) { return labelOf(info.param); });

TEST_P(MedianKinds, NanGivesSomeSampleOfTheWindowAndSpoilsNoOther) {
  const ImagePtr in = wideImage({80, 40}, eImageBufferType::Real32);
  std::mt19937 random(5);
  forEachSample(in->getGeometry(), [&](auto... at) {
    if (random() % 40 == 0) setSample(*in, random() % 2 ? NAN : -NAN, at...);
  });
  const ImagePtr expected = run(GetParam(), in, eImageBufferType::Real32);
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    EXPECT_TRUE(sameBits(*run(GetParam(), in, eImageBufferType::Real32), *expected))
        << core::toString(sets.getSets());
  }
  expectSamples(*expected, [&](auto... at) {
    std::vector<double> window = windowOf(*in, GetParam().half, at...);
    const double found = getSample(*expected, at...);
    const auto isNan = [](double v) { return std::isnan(v); };
    if (std::none_of(window.begin(), window.end(), isNan)) return middleOf(window);
    EXPECT_TRUE(isNan(found) || std::find(window.begin(), window.end(), found) != window.end());
    return found;
  });
}

// More samples than 16 bits count, and many periods of the mirrored image.
TEST(GenericMedian, WindowsFarLargerThanTheImage) {
  const Median large = {eMedian::Generic2d, {150, 120}};
  for (const auto type : allTypes()) expectMedian(large, wideImage({4, 3}, type), type);
}

TEST(GenericMedian, RefusesWindowsThatAreTooLarge) {
  const ImagePtr in = wideImage({4, 3}, eImageBufferType::Int16);
  expectFailure({"more than 4294967295 samples"}, [&] { genericMedian3dImg(in, 2000, 2000, 2000); });
}

}  // namespace
}  // namespace vexo::imaproc::filter
