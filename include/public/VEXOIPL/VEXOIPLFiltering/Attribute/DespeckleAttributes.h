#pragma once

#include "VEXOProcessing/Attributes.h"

namespace vexo::imaproc::attr {

struct InFactor : processor::Attribute<InFactor, double> {
  static constexpr char toolTip[] =
      "A pixel is replaced when this times its distance from the neighbours' mean exceeds their deviation";
  static BoolResult check(double value) { return processor::checkFinite(value); }
};

}  // namespace vexo::imaproc::attr
