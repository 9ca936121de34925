#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Attribute/RangeAttributes.h"

namespace vexo::imaproc::attr {

struct InInputRange : RangeAttribute<InInputRange> {
  static constexpr char toolTip[] = "Range of the input's samples, for which the 256 levels are chosen";
};

/// Median: whether 256 levels may stand for the input's samples, and, after a run, whether they had to.
struct InOutOptAllow8bitsCompression : processor::Attribute<InOutOptAllow8bitsCompression, bool> {
  static constexpr char toolTip[] =
      "Whether the result may be as coarse as 256 levels over the range of the image, which is fast";
  static bool defaultValue() { return false; }
};

}  // namespace vexo::imaproc::attr
