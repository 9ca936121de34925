#include "VEXOIPL/VEXOIPLFiltering/Median/LevelUse.h"

#include <algorithm>
#include <limits>

namespace vexo::imaproc::filter {

boost::shared_ptr<const attr::Range> makeMeasuredRange(double minimum, double maximum) {
  constexpr double largest = std::numeric_limits<float>::max();
  // Integers of 32 bits lie within that, too.
  return boost::make_shared<const attr::Range>(std::clamp(minimum, -largest, largest),
                                               std::clamp(maximum, -largest, largest));
}

LevelUse decideLevelUse(image::eImageBufferType type, bool compressionAllowed, const attr::Range& range) {
  const bool isReal = type == image::eImageBufferType::Real32;
  const double minimum = range.minimum.getValue(), maximum = range.maximum.getValue();
  const double width = maximum - minimum;
  const bool fits = 256.0 >= width && !isReal;
  const std::string said = "the range " + ScalarText<double>::toText(minimum) + " to " +
                           ScalarText<double>::toText(maximum) + (fits ? " fits" : " does not fit") +
                           " 256 levels";
  if (fits) return {true, true, said + (width > 255 ? ", which its 257 values share" : "")};
  if (compressionAllowed) return {false, true, "compression to 256 levels is allowed"};
  return {false, false,
          (isReal ? "the samples are 32-bit float" : said) + ", and compression is not allowed"};
}

std::optional<LevelUse> foreseeLevelUse(image::eImageBufferType type, bool compressionAllowed) {
  const LevelUse ofWidest = image::visitBufferType(type, [&](auto zero) {
    using Limits = std::numeric_limits<decltype(zero)>;
    return decideLevelUse(
        type, compressionAllowed,
        attr::Range(static_cast<double>(Limits::lowest()), static_cast<double>(Limits::max())));
  });
  if (ofWidest.used || type == image::eImageBufferType::Real32) return ofWidest;
  return std::nullopt;
}

}  // namespace vexo::imaproc::filter
