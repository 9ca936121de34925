#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization.h"

namespace vexo::imaproc::filter {

processor::RulePtr pearsonRule(const boost::shared_ptr<const processor::BaseImageAttribute>& first,
                               const boost::shared_ptr<const processor::BaseImageAttribute>& second,
                               const boost::shared_ptr<const processor::BaseImageAttribute>& map) {
  const auto isReal = processor::makeRule([map] {
    const auto image = map->getImage();
    if (!image || image->getBufferType() == image::eImageBufferType::Real32) return BoolResult(true);
    return BoolResult::failure(map->getName() + " must be a float32 image, not " +
                               image::toString(image->getBufferType()));
  });
  return matchSize(first, second) && matchSize(first, map) && isReal;
}

}  // namespace vexo::imaproc::filter
