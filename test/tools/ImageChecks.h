#pragma once

#include "tools/Calls.h"
#include "tools/Images.h"

namespace vexo::test {

/// True when all samples have the same bits.
inline testing::AssertionResult sameBits(const Image& a, const Image& b) {
  const std::string difference = findDifference(a, b);
  return difference.empty() ? testing::AssertionSuccess() : testing::AssertionFailure() << difference;
}

/// Each sample must be `expectedAt` its position, NaN where that is NaN, give or take `tolerance`; tells the
/// first that are not.
template <class ExpectedAt>
void expectSamples(const Image& image, const ExpectedAt& expectedAt, double tolerance = 0) {
  int failures = 0;
  forEachSample(image.getGeometry(), [&](auto... at) {
    const double found = getSample(image, at...), expected = expectedAt(at...);
    if (found == expected || std::abs(found - expected) <= tolerance ||
        (std::isnan(found) && std::isnan(expected)))
      return;
    if (failures++ >= 3) return;
    std::string place;
    for (const std::size_t position : {at...}) place += std::to_string(position) + " ";
    ADD_FAILURE() << "x y z c t " << place << ": " << found << " instead of " << expected;
  });
}

/// Names tests by the sample type that is their parameter.
struct TypeName {
  std::string operator()(const testing::TestParamInfo<eImageBufferType>& info) const {
    return image::toString(info.param);
  }
};

}  // namespace vexo::test
