#pragma once

#include "VEXOProcessing/Attributes.h"

namespace vexo::imaproc::attr {

struct Range : BaseDataItemNode {
  Range(double minimumValue = 0, double maximumValue = 0)
      : BaseDataItemNode("Range", "An interval of sample values") {
    add(minimum);
    add(maximum);
    minimum.setValue(minimumValue);
    maximum.setValue(maximumValue);
  }
  bool needsAllLeaves() const override { return true; }
  DataItemLeaf<double> minimum{"minimum", "Lowest value of the interval"};
  DataItemLeaf<double> maximum{"maximum", "Highest value of the interval, which belongs to it"};
};
struct InInputRange : processor::Attribute<InInputRange, boost::shared_ptr<const Range>> {
  static constexpr char toolTip[] = "Range of the input's samples, for which the 256 levels are chosen";
  static BoolResult check(const boost::shared_ptr<const Range>& range) {
    if (!range) return true;
    for (const auto* bound : {&range->minimum, &range->maximum})
      if (const BoolResult finite = processor::checkFinite(bound->getValue()); !finite)
        return BoolResult::failure(bound->getKey() + ": " + finite.getMessage());
    if (range->minimum.getValue() <= range->maximum.getValue()) return true;
    return BoolResult::failure(dataItemToText(*range) + " is reversed");
  }
};

/// Median: whether 256 levels may stand for the input's samples, and, after a run, whether they had to.
struct InOutOptAllow8bitsCompression : processor::Attribute<InOutOptAllow8bitsCompression, bool> {
  static constexpr char toolTip[] =
      "Whether the result may be as coarse as 256 levels over the range of the image, which is fast";
  static bool defaultValue() { return false; }
};

}  // namespace vexo::imaproc::attr
