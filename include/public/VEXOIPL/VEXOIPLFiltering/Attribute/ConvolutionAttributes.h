#pragma once

#include <algorithm>

#include "VEXOMath/Kernel.h"
#include "VEXOProcessing/Attributes.h"

namespace vexo::imaproc::attr {

/// Convolution kernels: offsets reach as far as half kernel sizes.
template <class Derived, class Kernel>
struct ConvolutionKnl : processor::Attribute<Derived, boost::shared_ptr<const Kernel>> {
  static BoolResult check(const boost::shared_ptr<const Kernel>& kernel) {
    if (kernel)
      for (const KernelReach& reach : kernel->getExtent())
        if (std::max(reach.before, reach.after) > image::maxStripMargin)
          return BoolResult::failure("it reaches " + std::to_string(std::max(reach.before, reach.after)) +
                                     " samples along an axis, more than " +
                                     std::to_string(image::maxStripMargin));
    return true;
  }
};
struct InKnlXY : ConvolutionKnl<InKnlXY, KernelXY> {
  static constexpr char toolTip[] = "Kernel: offsets in pixels with their weights";
};
struct InKnlXYZ : ConvolutionKnl<InKnlXYZ, KernelXYZ> {
  static constexpr char toolTip[] = "Kernel: offsets in voxels with their weights";
};
struct InNormalize : processor::Attribute<InNormalize, bool> {
  static constexpr char toolTip[] = "Divide by the sum of the weights, unless that is nearly 0";
};
/// Border policies: the constant of a constant border is a number.
template <class Derived, class Policy>
struct ConvolBorder : processor::Attribute<Derived, boost::shared_ptr<const Policy>> {
  static BoolResult check(const boost::shared_ptr<const Policy>& border) {
    return border ? processor::checkFinite(border->getConstant()) : true;
  }
};
struct InConvolBorder2d : ConvolBorder<InConvolBorder2d, image::Border2dPolicy> {
  static constexpr char toolTip[] = "How pixels outside the image are obtained";
};
struct InConvolBorder3d : ConvolBorder<InConvolBorder3d, image::Border3dPolicy> {
  static constexpr char toolTip[] = "How voxels outside the image are obtained";
};
struct InOptConvolBorder2d : ConvolBorder<InOptConvolBorder2d, image::Border2dPolicy> {
  static constexpr char toolTip[] = "How pixels outside the image are obtained";
  static StorageType defaultValue() { return image::mirorBorder2d(); }
};
struct InOptConvolBorder3d : ConvolBorder<InOptConvolBorder3d, image::Border3dPolicy> {
  static constexpr char toolTip[] = "How voxels outside the image are obtained";
  static StorageType defaultValue() { return image::mirorBorder3d(); }
};

}  // namespace vexo::imaproc::attr
