#pragma once

#include <vector>

#include "VEXOProcessing/Attributes.h"

namespace vexo::imaproc::attr {

struct InSpaceSigma : processor::Attribute<InSpaceSigma, double> {
  static constexpr char toolTip[] = "Standard deviation of the weights by distance, in pixels";
};
struct InRangeSigma : processor::Attribute<InRangeSigma, double> {
  static constexpr char toolTip[] =
      "Standard deviation of the weights by difference in value, in grey levels";
};
struct InOptHalfKnlSize : HalfKnlSize<InOptHalfKnlSize> {
  static constexpr char toolTip[] =
      "Half size of the window along each axis: it spans 2 * value + 1 samples; 0: 1.5 times InSpaceSigma";
  static std::uint32_t defaultValue() { return 0; }
};
struct InHalfKnlSize : HalfKnlSize<InHalfKnlSize> {
  static constexpr char toolTip[] = "Half size of the window along each axis: it spans 2 * value + 1 samples";
};
struct InScaleFactor : processor::Attribute<InScaleFactor, double> {
  static constexpr char toolTip[] = "Bins of the range weights per grey level";
};
using Floats = std::vector<float>;
struct InTabulatedSpaceExponentials
    : processor::Attribute<InTabulatedSpaceExponentials, boost::shared_ptr<const Floats>> {
  static constexpr char toolTip[] = "Weight of each place of the window";
};
struct InTabulatedRangeExponentials
    : processor::Attribute<InTabulatedRangeExponentials, boost::shared_ptr<const Floats>> {
  static constexpr char toolTip[] = "Weight of each bin of differences in value";
};

}  // namespace vexo::imaproc::attr
