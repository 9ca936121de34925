#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralClass.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralParameters.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/StatsResult.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

/// The tables of a call, built once and read by all its pieces.
struct BilateralTables {
  std::uint32_t halfSize;
  double scale;
  boost::shared_ptr<const attr::Floats> space, range;
};

/// The half size of a call: `given` unless that is 0, otherwise 1.5 deviations, rounded; 0 for a deviation
/// that is negative or NaN.
double bilateralHalfSize(std::uint32_t given, double spaceSigma);

/// statistics: null for an 8-bit image.
VEXO_API BilateralTables makeBilateralTables(const processor::BaseProcessor& level1,
                                             image::eImageBufferType input,
                                             const boost::shared_ptr<const attr::StatsResult>& statistics,
                                             eBilateralWindow window);

template <class Sub>
using BilateralLvl2Attributes =
    processor::AttributeList<Sub, attr::OutImg, attr::InScaleFactor, attr::InTabulatedSpaceExponentials,
                             attr::InTabulatedRangeExponentials, attr::InSpaceSigma, attr::InRangeSigma,
                             attr::InHalfKnlSize>;

/// The last step of a call: level 2 on each plane, or volume.
template <class Next, class Sub>
boost::shared_ptr<core::BaseActionProvider> dispatchBilateral(
    const core::BasePriority& priority, const processor::BaseProcessor& level1,
    const boost::shared_ptr<const image::BaseImage>& input, eSubImageSplitType pieces,
    const BilateralTables& tables) {
  using namespace processor;
  return dispatchPieces<Next>(
      priority, boost::make_shared<SubImageSplit<Next, Sub>>(input, pieces),
      boost::make_shared<SubImageSplit<Next, attr::OutImg>>(level1.getStorage<attr::OutImg>(), pieces),
      staticNoSplit<Next, attr::InScaleFactor>(tables.scale),
      staticNoSplit<Next, attr::InTabulatedSpaceExponentials>(tables.space),
      staticNoSplit<Next, attr::InTabulatedRangeExponentials>(tables.range),
      staticNoSplit<Next, attr::InSpaceSigma>(level1.getStorage<attr::InSpaceSigma>()),
      staticNoSplit<Next, attr::InRangeSigma>(level1.getStorage<attr::InRangeSigma>()),
      staticNoSplit<Next, attr::InHalfKnlSize>(tables.halfSize));
}

/// Level 2 when the window is a single sample: the samples themselves, converted, integers of 32 bits with
/// all their bits. False when the window has more.
bool convertSingleSamples(const boost::shared_ptr<const image::BaseImage>& input,
                          const boost::shared_ptr<image::BaseImage>& output, std::uint32_t halfSize);

/// The tables as kernels read them; fails when they do not fit the margins of the window.
BoolResult makeBilateralParameters(const attr::Floats& space, const attr::Floats& range, double scale,
                                   const image::StripMargins& margins, bool walk,
                                   BilateralParameters& parameters);

/// What the third levels of the bilateral filters have in common. Their border is that of every parser:
/// mirror. `walk` tells which spatial weights they read.
template <class Derived, class InStrip, class OutStrip, bool walk = false>
class VEXO_API BilateralLvl3 : public processor::KernelProcessorClass<Derived> {
public:
  using Attributes =
      processor::AttributeList<InStrip, OutStrip, attr::InScaleFactor, attr::InTabulatedSpaceExponentials,
                               attr::InTabulatedRangeExponentials>;
  struct Strips {
    using In = InStrip;
    using Out = OutStrip;
  };

private:
  BoolResult preProcessStrip() override {
    _space = this->template getStorage<attr::InTabulatedSpaceExponentials>();
    _range = this->template getStorage<attr::InTabulatedRangeExponentials>();
    return makeBilateralParameters(*_space, *_range, this->template getStorage<attr::InScaleFactor>(),
                                   this->template getStorage<InStrip>()->getMargins(), walk, _parameters);
  }
  const void* getKernelParameters() const override { return &_parameters; }

  boost::shared_ptr<const attr::Floats> _space, _range;
  BilateralParameters _parameters{};
};

/// The splits that hand the tables of level 2 to level 3.
template <class Next>
auto scaleSplit(const processor::BaseProcessor& level2) {
  return processor::dynamicNoSplit<Next, attr::InScaleFactor>(level2.getStorage<attr::InScaleFactor>());
}
template <class Next>
auto spaceSplit(const processor::BaseProcessor& level2) {
  return processor::dynamicNoSplit<Next, attr::InTabulatedSpaceExponentials>(
      level2.getStorage<attr::InTabulatedSpaceExponentials>());
}
template <class Next>
auto rangeSplit(const processor::BaseProcessor& level2) {
  return processor::dynamicNoSplit<Next, attr::InTabulatedRangeExponentials>(
      level2.getStorage<attr::InTabulatedRangeExponentials>());
}

}  // namespace vexo::imaproc::filter
