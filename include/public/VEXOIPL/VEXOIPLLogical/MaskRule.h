#pragma once

#include "VEXOProcessing/Rule.h"

namespace vexo::imaproc::logic {

/// The mask has the size of the image and holds 8-bit samples, signed or not.
VEXO_API processor::RulePtr matchMask(const boost::weak_ptr<const processor::BaseImageAttribute>& image,
                                      const boost::weak_ptr<const processor::BaseImageAttribute>& mask);

}  // namespace vexo::imaproc::logic
