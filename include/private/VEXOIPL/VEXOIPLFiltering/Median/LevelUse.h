#pragma once

#include <optional>
#include <string>

#include "VEXOIPL/VEXOIPLFiltering/Attribute/MedianAttributes.h"

namespace vexo::imaproc::filter {

/// The range of measured samples. An infinity counts as the largest float.
boost::shared_ptr<const attr::Range> makeMeasuredRange(double minimum, double maximum);

/// Whether a median counts its samples in 256 levels, which is fast, and what decides that.
struct LevelUse {
  bool fits;  ///< the range of the samples needs no compression
  bool used;
  std::string reason;
};

LevelUse decideLevelUse(image::eImageBufferType type, bool compressionAllowed, const attr::Range& range);
/// The same where it does not depend on the range that the samples have within their type.
std::optional<LevelUse> foreseeLevelUse(image::eImageBufferType type, bool compressionAllowed);

}  // namespace vexo::imaproc::filter
