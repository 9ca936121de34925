#pragma once

#include "VEXOCore/Gpu.h"
#include "VEXOIPL/VEXOIPLFiltering/Attribute/ConvolutionAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionOnGpu.h"
#include "VEXOIPL/VEXOIPLFiltering/Convolution/FlatKernel.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

inline void setBorder(image::InputStripParser& parser,
                      const boost::shared_ptr<const image::Border2dPolicy>& border) {
  parser.setBorder2dPolicy(border);
}
inline void setBorder(image::InputStripParser& parser,
                      const boost::shared_ptr<const image::Border3dPolicy>& border) {
  parser.setBorder3dPolicy(border);
}

/// What the third levels of the convolutions have in common.
template <class Derived, class InStrip, class Knl, class Border, class OutStrip, class Source = Derived>
class VEXO_API ConvolutionLvl3 : public processor::KernelProcessorClass<Derived, Source> {
public:
  using Attributes = processor::AttributeList<InStrip, Knl, attr::InNormalize, Border, OutStrip>;

private:
  BoolResult preProcessStrip() override {
    setBorder(this->template accessParser<InStrip>(), this->template getStorage<Border>());
    _kernel.init(*this->template getStorage<Knl>(), this->template getStorage<attr::InNormalize>());
    return true;
  }
  const void* getKernelParameters() const override { return &_kernel.get(); }

  FlatKernel _kernel;
};

template <class Derived, class Knl, class Border>
class VEXO_API ConvolutionGpuLvl3
    : public processor::ProcessorClass<Derived, processor::BaseGpuProcessingAlgorithm> {
public:
  using Attributes =
      processor::AttributeList<attr::InSubGpuImg, Knl, attr::InNormalize, Border, attr::OutImg>;

private:
  BoolResult processOnGpu() override {
    FlatKernel kernel;
    kernel.init(*this->template getStorage<Knl>(), this->template getStorage<attr::InNormalize>());
    return convolveOnGpu(*this->template getStorage<attr::InSubGpuImg>(),
                         *this->template getStorage<attr::OutImg>(), kernel,
                         *this->template getStorage<Border>());
  }
};

/// In place, the results of a strip stay in a buffer of its own until all of it has been read, unless the
/// kernel never comes back to what it has written.
StripCut convolutionCut(const KernelXY& kernel);
/// A kernel along Z is run on bands of rows of all slices, which need no margins from each other; others on
/// bands of slices.
StripCut convolutionCut(const KernelXYZ& kernel);

/// What the second levels of the convolutions have in common.
template <class Derived, class Next, class GpuNext, class Sub, class Knl, class Border>
class VEXO_API ConvolutionLvl2 : public StripLevel<Derived, Next> {
public:
  using Attributes = processor::AttributeList<Sub, Knl, attr::InNormalize, Border, attr::OutImg>;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    promoteInput(*this, initializers);
  }
  StripCut getCut() const override { return convolutionCut(*this->template getStorage<Knl>()); }
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    const StripCut cut = getCut();  // refuses kernels that reach too far, on the GPU, too
    if (tryToLaunchGpuProcess(priority, provider)) return true;
    provider = dispatchStrips<Next>(priority, self(), cut);
    return true;
  }
  /// False when the image does not lie on the GPU.
  bool tryToLaunchGpuProcess(const core::BasePriority& priority, core::ProviderPtr& provider) const {
    if (!core::isGpuSupportActivated() || !this->template getStorage<Sub>()->isGpuImage()) return false;
    const LevelImages images(*this);
    if (!images.outputs.front()->isGpuImage())
      this->raiseFailure(VEXO_HERE, "OutImg: an image on the GPU is needed");
    provider = dispatchSubImages<GpuNext, eSubImageSplitType::Volume3d>(priority, self(), images);
    return true;
  }
  const Derived& self() const { return static_cast<const Derived&>(*this); }
};

}  // namespace vexo::imaproc::filter
