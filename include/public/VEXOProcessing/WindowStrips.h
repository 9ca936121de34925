#pragma once

#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"

namespace vexo::imaproc {

/// What a second level does whose window reaches beyond its strips: cuts Sub and OutImg of `level2` into
/// strips for Next, those of the input with the margins of the window. In place, the margins of each strip
/// are saved before the first strip starts; `inPlace` says whether the output needs a buffer of its own then:
/// not when the kernel loads every sample of its strip before it writes over it (View). Further splits serve
/// the other attributes of Next.
template <class Next, class Sub, class InStrip, class OutStrip, image::eStripParsingDirection direction,
          class... Splits>
boost::shared_ptr<core::BaseActionProvider> dispatchWindowStrips(const core::BasePriority& priority,
                                                                 const processor::BaseProcessor& level2,
                                                                 const image::StripMargins& margins,
                                                                 image::eStripAllocationType inPlace,
                                                                 const boost::shared_ptr<Splits>&... splits) {
  using image::eStripAllocationType;
  const bool inSitu = isInSitu(level2.accessAttribute<Sub>(), level2.accessAttribute<attr::OutImg>());
  return processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageStripSplit<Next, const image::BaseImage, InStrip, direction>>(
          level2.getStorage<Sub>(), inSitu ? eStripAllocationType::OwnBuffer : eStripAllocationType::View,
          margins),
      boost::make_shared<ImageStripSplit<Next, image::BaseImage, OutStrip, direction>>(
          level2.getStorage<attr::OutImg>(), inSitu ? inPlace : eStripAllocationType::View),
      splits...);
}

/// Bands of rows of a plane.
template <class Next, class... Splits>
auto dispatchRows(const core::BasePriority& priority, const processor::BaseProcessor& level2,
                  const image::StripMargins& margins, image::eStripAllocationType inPlace,
                  const boost::shared_ptr<Splits>&... splits) {
  return dispatchWindowStrips<Next, attr::InSubImg2d, attr::InKnlYStrip2d, attr::OutYStrip2d,
                              image::eStripParsingDirection::Y>(priority, level2, margins, inPlace,
                                                                splits...);
}
/// Bands of columns of a plane.
template <class Next, class... Splits>
auto dispatchColumns(const core::BasePriority& priority, const processor::BaseProcessor& level2,
                     const image::StripMargins& margins, image::eStripAllocationType inPlace,
                     const boost::shared_ptr<Splits>&... splits) {
  return dispatchWindowStrips<Next, attr::InSubImg2d, attr::InKnlXStrip2d, attr::OutXStrip2d,
                              image::eStripParsingDirection::X>(priority, level2, margins, inPlace,
                                                                splits...);
}
/// Bands of slices of a volume.
template <class Next, class... Splits>
auto dispatchSlices(const core::BasePriority& priority, const processor::BaseProcessor& level2,
                    const image::StripMargins& margins, image::eStripAllocationType inPlace,
                    const boost::shared_ptr<Splits>&... splits) {
  return dispatchWindowStrips<Next, attr::InSubImg3d, attr::InKnlZStrip3d, attr::OutZStrip3d,
                              image::eStripParsingDirection::Z>(priority, level2, margins, inPlace,
                                                                splits...);
}

}  // namespace vexo::imaproc
