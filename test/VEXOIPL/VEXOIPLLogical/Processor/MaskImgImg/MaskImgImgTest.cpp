#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl1.h"

#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::imaproc::logic {
namespace {

using namespace test;

/// Random samples, among them the limits of all types, halves and odd values beyond 2^24.
ImagePtr edgeImage(const ImageGeometry& g, eImageBufferType type, unsigned seed) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  const double values[] = {0,    -1,    127,   128,    -128,       -129,        255,
                           256,  32767, 32768, -32768, -32769,     65535,       65536,
                           0.5,  -0.5,  2.5,   -2.5,   16777217,   2147483647,  -2147483648.0,
                           1e30, -1e30, nan,   -inf,   4294967295, 0.49999997f, 2147483648.0};
  const ImagePtr random = randomImage(g, type, seed);
  std::size_t next = seed;
  return makeImage(g, type, [&](auto x, auto y, auto... at) {
    return (x + y) % 2 == 0 ? converted(values[next++ % std::size(values)], type)
                            : getSample(*random, x, y, at...);
  });
}

class MaskImgImgTypes : public testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, MaskImgImgTypes, testing::ValuesIn(allTypes()), TypeName());

TEST_P(MaskImgImgTypes, AllTypesOfSecondAndOutputOnEveryInstructionSet) {
  const ImageGeometry g{1100, 3, 1, 2};
  const ImagePtr first = edgeImage(g, GetParam(), 1), values = randomImage(g, eImageBufferType::UInt8, 3);
  const ImagePtr mask = makeImage(g, eImageBufferType::UInt8, [&](auto x, auto... at) {
    return x / 3 % 2 ? 0 : getSample(*values, x, at...);
  });
  for (const auto secondType : allTypes()) {
    const ImagePtr second = edgeImage(g, secondType, 2);
    for (const auto type : allTypes())
      for (const auto& sets : offeredSets()) {
        SCOPED_TRACE(core::toString(sets.getSets()) + " " + image::toString(secondType) + " to " +
                     image::toString(type));
        const ForcedSets forced(sets);
        const ImagePtr out = withGaps(*Image::create(g, type), 1);
        maskImgImg(withGaps(*first, 3), second, mask, out);
        expectSamples(*out, [&](auto... at) {
          return converted(getSample(getSample(*mask, at...) != 0 ? *first : *second, at...), type);
        });
      }
  }
}

TEST(LogicalMessages, TablesAreRegisteredWhenTheLibraryIsLoaded) {
  EXPECT_EQ(LogMessageManager::getInstance("VEXOIPLLogical")
                .getMessage("vexo::imaproc::logic::eProcessorMessage", 0),
            MaskImgImgLvl1::getToolTipStr());
  EXPECT_EQ(getVEXOIPLLogicalLoggerName(), "vexo.VEXOIPLLogical");
}

}  // namespace
}  // namespace vexo::imaproc::logic
