#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralTables.h"

namespace vexo::imaproc::filter {

/// One pass over an image, which may be the output itself. In place, what the border sends a walk back to is
/// saved before the first strip starts; the output needs no buffer of its own: the kernel loads every sample
/// of its strip before it writes over it.
template <class Next, image::eStripParsingDirection direction>
boost::shared_ptr<core::BaseActionProvider> makePass(const core::BasePriority& priority,
                                                     const processor::BaseProcessor& level2,
                                                     const boost::shared_ptr<const image::BaseImage>& from,
                                                     const image::StripMargins& margins) {
  using image::eStripAllocationType;
  using Attributes = typename Next::Strips;
  const auto to = level2.getStorage<attr::OutImg>();
  return processor::dispatchStrips<Next>(
      priority,
      boost::make_shared<ImageStripSplit<Next, const image::BaseImage, typename Attributes::In, direction>>(
          from,
          image::isSameBuffer(*from, *to) ? eStripAllocationType::OwnBuffer : eStripAllocationType::View,
          margins),
      boost::make_shared<ImageStripSplit<Next, image::BaseImage, typename Attributes::Out, direction>>(
          to, eStripAllocationType::View),
      scaleSplit<Next>(level2), spaceSplit<Next>(level2), rangeSplit<Next>(level2));
}

}  // namespace vexo::imaproc::filter
