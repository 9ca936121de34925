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

/// Bounds are finite and in order.
template <class Derived>
struct RangeAttribute : processor::Attribute<Derived, boost::shared_ptr<const Range>> {
  static BoolResult check(const boost::shared_ptr<const Range>& range) {
    if (!range) return true;
    for (const auto* bound : {&range->minimum, &range->maximum})
      if (const BoolResult finite = processor::checkFinite(bound->getValue()); !finite)
        return BoolResult::failure(bound->getKey() + ": " + finite.getMessage());
    if (range->minimum.getValue() <= range->maximum.getValue()) return true;
    return BoolResult::failure(dataItemToText(*range) + " is reversed");
  }
};
/// For filters that measure the range of the whole image. Given, it is used as it is, and nothing is
/// measured: so parts of an image are filtered as the whole would be.
struct InOptInputRange : RangeAttribute<InOptInputRange> {
  static constexpr char toolTip[] =
      "Range of the samples of the whole image, when this is a part of it; measured when not given";
};

}  // namespace vexo::imaproc::attr
