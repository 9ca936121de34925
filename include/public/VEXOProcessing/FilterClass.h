#pragma once

#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc {

/// A processor that makes OutImg of the image In: it must have the sizes of In, and gets its type, too,
/// unless the caller gives it.
template <class Derived, class Base, class In>
class VEXO_API FilterClass : public processor::ProcessorClass<Derived, Base> {
protected:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    initializers["OutImg"] = duplicateInOut<In, attr::OutImg>(this->template accessAttribute<attr::OutImg>(),
                                                              this->template accessAttribute<In>());
  }
  processor::RulePtr createRule() const override {
    return matchSize(this->template accessAttribute<In>(), this->template accessAttribute<attr::OutImg>());
  }
};

/// What a first level does whose pieces need nothing but its own values: Next on each plane of `input` and of
/// OutImg, with the attributes As as they are.
template <class Next, class... As>
boost::shared_ptr<core::BaseActionProvider> dispatchPlanes(
    const core::BasePriority& priority, const processor::BaseProcessor& level1,
    const boost::shared_ptr<const image::BaseImage>& input) {
  return processor::dispatchPieces<Next>(priority, planeSplit<Next, attr::InSubImg2d>(input),
                                         planeSplit<Next, attr::OutImg>(level1.getStorage<attr::OutImg>()),
                                         processor::staticNoSplit<Next, As>(level1.getStorage<As>())...);
}
/// The same on each volume.
template <class Next, class... As>
boost::shared_ptr<core::BaseActionProvider> dispatchVolumes(
    const core::BasePriority& priority, const processor::BaseProcessor& level1,
    const boost::shared_ptr<const image::BaseImage>& input) {
  return processor::dispatchPieces<Next>(priority, volumeSplit<Next, attr::InSubImg3d>(input),
                                         volumeSplit<Next, attr::OutImg>(level1.getStorage<attr::OutImg>()),
                                         processor::staticNoSplit<Next, As>(level1.getStorage<As>())...);
}

}  // namespace vexo::imaproc
