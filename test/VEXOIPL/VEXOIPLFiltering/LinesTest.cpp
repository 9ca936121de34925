// What all filters of lines of floats share: how lines become samples again.

#include <functional>
#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing3dImg/GaussianSmoothing3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothing3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl1.h"
#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::imaproc::filter {
namespace {

using namespace test;

// Floats hold 24 bits of them.
TEST(OneSampleWindows, KeepIntegersOf32Bits) {
  const auto identity = boost::make_shared<KernelXY>();
  identity->insert({0, 0}, 1);
  const auto coverage = attr::InOptSmoothingGaussianCoverage::defaultValue();
  const ImageGeometry size{37, 5, 3};
  const ImagePtr mask = constantImage(size, eImageBufferType::Int8, -1);
  const std::vector<std::function<void(const ImagePtr&, const ImagePtr&)>> filters = {
      [](const auto& in, const auto& out) { meanSmoothing2dImg(in, 0, 0, out); },
      [](const auto& in, const auto& out) { meanSmoothing3dImg(in, 0, 0, 0, out); },
      [&](const auto& in, const auto& out) { meanSmoothing2dMaskImg(in, mask, 0, 0, out); },
      [&](const auto& in, const auto& out) { meanSmoothing3dMaskImg(in, mask, 0, 0, 0, out); },
      [&](const auto& in, const auto& out) { gaussianSmoothing2dImg(in, 0, 0, coverage, out); },
      [&](const auto& in, const auto& out) { gaussianSmoothing3dImg(in, 0, 0, 0, coverage, out); },
      [&](const auto& in, const auto& out) { convolution2dImg(in, identity, true, out); }};
  for (const auto type : {eImageBufferType::UInt32, eImageBufferType::Int32})
    for (const auto outType : allTypes()) {
      if (outType == eImageBufferType::Real32) continue;
      const double most = type == eImageBufferType::UInt32 ? 4294967295.0 : 2147483647.0;
      const ImagePtr in = makeImage(size, type, [&](auto x, auto y, auto z, auto...) {
        return most - 16777217.0 * static_cast<double>(x % 120) - static_cast<double>(y + 5 * z);
      });
      for (std::size_t i = 0; i < filters.size(); ++i) {
        const ImagePtr out = Image::create(size, outType);
        filters[i](in, out);
        SCOPED_TRACE("filter " + std::to_string(i) + " to " + image::toString(outType));
        image::visitBufferType(outType, [&](auto zero) {
          using T = decltype(zero);
          expectSamples(*out, [&](auto... at) {
            const double kept = std::min(getSample(*in, at...), sizeof(T) < 4 ? 2147483647.0 : 4294967295.0);
            return static_cast<double>(static_cast<T>(static_cast<long long>(kept)));
          });
        });
      }
    }
}

// Large images are written past the caches, in place they are not; lines begin at odd addresses.
TEST(StoredLines, OfLargeImagesAreComplete) {
  const ImagePtr in = randomImage({2903, 2900}, eImageBufferType::Real32);
  const ImagePtr out = withGaps(*in, 3), same = copyOf(*in);
  meanSmoothing2dImg(same, 2, 2, same);
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    image::copySamples(*in, *out);
    meanSmoothing2dImg(in, 2, 2, out);
    EXPECT_TRUE(sameBits(*out, *same)) << core::toString(sets.getSets());
  }
}

// Sums of infinities make NaN of either sign, as the order of the operands has it.
TEST(StoredLines, HoldOneKindOfNan) {
  const ImagePtr in = randomImage({143, 97, 7}, eImageBufferType::Real32);
  setSample(*in, std::numeric_limits<double>::infinity(), 70, 40, 3);
  setSample(*in, -std::numeric_limits<double>::quiet_NaN(), 90, 60, 2);
  ImagePtr expected;
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(sets);
    const ImagePtr out = copyOf(*in);
    meanSmoothing3dImg(in, 3, 2, 1, out);
    if (!expected) expected = out;
    EXPECT_TRUE(sameBits(*out, *expected)) << core::toString(sets.getSets());
  }
}

}  // namespace
}  // namespace vexo::imaproc::filter
