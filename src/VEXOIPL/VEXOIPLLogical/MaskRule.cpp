#include "VEXOIPL/VEXOIPLLogical/MaskRule.h"

namespace vexo::imaproc::logic {

using processor::BaseImageAttribute;

processor::RulePtr matchMask(const boost::weak_ptr<const BaseImageAttribute>& image,
                             const boost::weak_ptr<const BaseImageAttribute>& mask) {
  return matchSize(image, mask) && processor::makeRule([mask]() -> BoolResult {
           const auto attribute = mask.lock();
           const auto given = attribute ? attribute->getImage() : nullptr;
           if (!given || image::getSampleSize(given->getBufferType()) == 1) return true;
           return BoolResult::failure(attribute->getName() + " must be 8-bit, it is " +
                                      toString(given->getBufferType()));
         });
}

}  // namespace vexo::imaproc::logic
