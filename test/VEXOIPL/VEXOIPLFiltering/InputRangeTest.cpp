// A part of an image, filtered with the range of the whole, has the samples of the whole.

#include "VEXOIPL/VEXOIPLFiltering/Attribute/MedianAttributes.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "tools/Calls.h"
#include "tools/Images.h"

namespace vexo::test {
namespace {

using image::eImageBufferType;

struct Case {
  const char* filter;
  std::vector<std::pair<const char*, const char*>> values;
};

class InputRange : public testing::TestWithParam<Case> {
protected:
  static boost::shared_ptr<processor::BaseProcessor> prepare(const ImagePtr& in, const std::string& range) {
    const auto filter = processor::ProcessorFactory::createProcessor(std::string("vexo::imaproc::filter::") +
                                                                     GetParam().filter);
    EXPECT_TRUE(filter->init());
    boost::dynamic_pointer_cast<processor::BaseImageAttribute>(filter->getAttributes().front())->setImage(in);
    for (const auto& [name, text] : GetParam().values)
      EXPECT_TRUE(filter->findAttribute(name)->setText(text));
    if (!range.empty()) {
      EXPECT_TRUE(filter->findAttribute("InOptInputRange")->setText(range));
    }
    return filter;
  }
  static ImagePtr run(const ImagePtr& in, const std::string& range) {
    const auto filter = prepare(in, range);
    executeSyncRun(filter);
    return copyOf(image::hostImage(filter->getStorage<imaproc::attr::OutImg>(), "OutImg"));
  }
};

TEST_P(InputRange, OfTheWholeMakesAPartEqualToIt) {
  for (const eImageBufferType type : {eImageBufferType::Real32, eImageBufferType::UInt16}) {
    // The extremes lie beyond the part.
    const ImagePtr whole = randomImage({40, 150, 3}, type);
    setSample(*whole, 0, 5, 149);
    setSample(*whole, 60000, 6, 149);
    const ImagePtr part = Image::create({40, 128, 3}, type);
    forEachSample(part->getGeometry(),
                  [&](auto... at) { setSample(*part, getSample(*whole, at...), at...); });
    const std::string range = type == eImageBufferType::Real32 ? "minimum=-3000,maximum=60000" : "0,60000";
    const ImagePtr expected = run(whole, range), given = run(part, range), measured = run(part, "");
    bool differs = false;
    forEachSample(
        part->getGeometry(), [&](std::size_t x, std::size_t y, std::size_t z, std::size_t c, std::size_t t) {
          if (y >= 120) return;  // windows that reach over the cut
          ASSERT_EQ(getSample(*given, x, y, z, c, t), getSample(*expected, x, y, z, c, t)) << x << ' ' << y;
          differs = differs || getSample(*measured, x, y, z, c, t) != getSample(*given, x, y, z, c, t);
        });
    if (type == eImageBufferType::Real32) {
      EXPECT_TRUE(differs) << "the range of the part decides when none is given";
    }
  }
}

TEST_P(InputRange, MayHaveNothingInCommonWithTheSamples) {
  for (const eImageBufferType type : {eImageBufferType::Real32, eImageBufferType::Int32})
    for (const char* range :
         {"minimum=1e300,maximum=1e301", "minimum=-1e301,maximum=-1e300", "minimum=5,maximum=5",
          "minimum=-1e308,maximum=1e308", "minimum=0,maximum=1e-300", "minimum=0,maximum=-0"})
      EXPECT_NO_THROW(run(randomImage({30, 20, 3}, type), range)) << range;
}

TEST_P(InputRange, IsNotMeasuredWhenItIsGiven) {
  const auto filter = prepare(randomImage({20, 20, 3}, eImageBufferType::UInt16), "0,60000");
  for (const auto& choice : filter->explain()) EXPECT_NE(choice.child, "StatsMsrLvl1") << choice.reason;
  executeSyncRun(filter);
  for (const auto& choice : filter->explain()) EXPECT_NE(choice.child, "StatsMsrLvl1") << choice.reason;
  expectFailure({"InOptInputRange", "reversed"},
                [&] { filter->findAttribute("InOptInputRange")->setText("2,1"); });
}

INSTANTIATE_TEST_SUITE_P(
    Filters, InputRange,
    testing::Values(
        Case{"Bilateral2dImgLvl1", {{"InSpaceSigma", "2"}, {"InRangeSigma", "900"}}},
        Case{"Bilateral3dImgLvl1", {{"InSpaceSigma", "1"}, {"InRangeSigma", "900"}}},
        Case{"SeparatedBilateral2dImgLvl1", {{"InSpaceSigma", "2"}, {"InRangeSigma", "900"}}},
        Case{"SeparatedBilateral3dImgLvl1", {{"InSpaceSigma", "1"}, {"InRangeSigma", "900"}}},
        Case{"Median2dImgLvl1",
             {{"InHalfKnlSizeX", "3"}, {"InHalfKnlSizeY", "3"}, {"InOutOptAllow8bitsCompression", "true"}}},
        Case{"Median3dImgLvl1",
             {{"InHalfKnlSizeX", "2"},
              {"InHalfKnlSizeY", "2"},
              {"InHalfKnlSizeZ", "1"},
              {"InOutOptAllow8bitsCompression", "true"}}}),
    [](const auto& info) { return std::string(info.param.filter); });

}  // namespace
}  // namespace vexo::test
