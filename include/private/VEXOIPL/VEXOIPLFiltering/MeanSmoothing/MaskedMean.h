#pragma once

#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLevels.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// The image, or a copy of it when it is the output as well.
inline image::ConstImagePtr copyIfWritten(const image::ConstImagePtr& image, const image::ImagePtr& output) {
  if (!image::isSameBuffer(*image, *output)) return image;
  const auto copy = image::Image::create(image->getGeometry(), image->getBufferType());
  image::copySamples(image::hostImage(image, "image to copy"), *copy);
  return copy;
}

/// What the second levels of the masked means do: means of all samples into the output, then the input's
/// samples where the mask is clear.
///
/// The second step, and windows of the first, read samples that the first has written when the output is the
/// input or the mask: then they are read from a copy.
template <class Derived, class Mean, class Choice, image::eStripParsingDirection direction>
class VEXO_API MaskedMeanLvl2 : public FilterClass<Derived, processor::BaseAsync2Processor> {
  BoolResult preProcess() override {
    const LevelImages images(*this);
    for (const auto& input : images.inputs) _inputs.push_back(copyIfWritten(input, images.outputs.front()));
    return true;
  }
  void clearIntermediateData() override { _inputs.clear(); }
  /// The choice by the mask is a small part of the work.
  double getStepCost(std::size_t step) const override { return step == 0 ? 15 : 1; }
  BoolResult retrieveFirstProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    StripCut cut{windowMargins(*this)};
    cut.direction = direction;
    provider = dispatchStrips<Mean>(priority, self(), cut, LevelImages(_inputs, {getOutput()}));
    return true;
  }
  // In place on the means: it needs no samples but those it replaces.
  BoolResult retrieveSecondProvider(const core::BasePriority& priority,
                                    core::ProviderPtr& provider) override {
    StripCut cut;
    cut.direction = direction;
    provider = dispatchStrips<Choice>(priority, self(), cut,
                                      LevelImages({getOutput(), _inputs[0], _inputs[1]}, {getOutput()}));
    return true;
  }

  const Derived& self() const { return static_cast<const Derived&>(*this); }
  image::ImagePtr getOutput() const { return this->template getStorage<attr::OutImg>(); }

  std::vector<image::ConstImagePtr> _inputs;  ///< samples and mask
};

}  // namespace vexo::imaproc::filter
