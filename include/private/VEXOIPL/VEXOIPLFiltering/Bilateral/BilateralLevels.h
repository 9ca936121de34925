#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralTables.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// What the third levels of the bilateral filters have in common. `walk` tells which spatial weights they
/// read.
template <class Derived, class InStrip, class OutStrip, class Source = Derived, bool walk = false>
class VEXO_API BilateralLvl3 : public processor::KernelProcessorClass<Derived, Source> {
public:
  using Attributes =
      processor::AttributeList<InStrip, OutStrip, attr::InScaleFactor, attr::InTabulatedSpaceExponentials,
                               attr::InTabulatedRangeExponentials>;

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

template <class Sub>
using BilateralLvl2Attributes =
    processor::AttributeList<Sub, attr::OutImg, attr::InScaleFactor, attr::InTabulatedSpaceExponentials,
                             attr::InTabulatedRangeExponentials, attr::InSpaceSigma, attr::InRangeSigma,
                             attr::InHalfKnlSize>;

/// A window of a single sample: the samples themselves, converted, integers of 32 bits with all their bits.
core::ProviderPtr convertSamples(const processor::BaseProcessor& level2, const image::ConstImagePtr& input,
                                 const image::ImagePtr& output);

/// Level 2 with the whole window at once. Derived states getCut().
template <class Derived, class Next, class Sub>
class VEXO_API BilateralLvl2 : public StripLevel<Derived, Next> {
public:
  using Attributes = BilateralLvl2Attributes<Sub>;

protected:
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    if (this->template getStorage<attr::InHalfKnlSize>() != 0)
      return StripLevel<Derived, Next>::retrieveProvider(priority, provider);
    provider =
        convertSamples(*this, this->template getStorage<Sub>(), this->template getStorage<attr::OutImg>());
    return true;
  }
};

/// Level 2 with a pass along each axis, the first from the input into the output, the others in place on the
/// output. In place, what the border sends a walk back to is saved before the first strip starts; the output
/// needs no buffer of its own: the kernel loads every sample of its strip before it writes over it.
template <class Derived, class Base, class Sub>
class VEXO_API SeparatedBilateralLvl2 : public FilterClass<Derived, Base> {
public:
  using Attributes = BilateralLvl2Attributes<Sub>;

protected:
  using Direction = image::eStripParsingDirection;

  template <class Next>
  BoolResult firstPass(const core::BasePriority& priority, core::ProviderPtr& provider,
                       Direction direction = Direction::Y) const {
    const auto from = this->template getStorage<Sub>();
    provider = getHalf() == 0 ? convertSamples(*this, from, getOutput())
                              : makePass<Next>(priority, from, 0, direction);
    return true;
  }
  template <class Next>
  BoolResult laterPass(int axis, const core::BasePriority& priority, core::ProviderPtr& provider,
                       Direction direction = Direction::Y) const {
    if (getHalf() != 0) provider = makePass<Next>(priority, getOutput(), axis, direction);
    return true;
  }

private:
  std::uint32_t getHalf() const { return this->template getStorage<attr::InHalfKnlSize>(); }
  image::ImagePtr getOutput() const { return this->template getStorage<attr::OutImg>(); }

  template <class Next>
  core::ProviderPtr makePass(const core::BasePriority& priority, const image::ConstImagePtr& from, int axis,
                             Direction direction) const {
    StripCut cut;
    cut.margins.before[axis] = cut.margins.after[axis] = getHalf();
    cut.direction = direction;
    return dispatchStrips<Next>(priority, static_cast<const Derived&>(*this), cut,
                                LevelImages({from}, {getOutput()}));
  }
};

/// The last step of a call: level 2 on each plane, or volume, with the tables of weights.
template <class Next, eSubImageSplitType type, class Level>
core::ProviderPtr dispatchBilateral(const core::BasePriority& priority, const Level& level1,
                                    const boost::shared_ptr<const attr::StatsResult>& statistics,
                                    eBilateralWindow window) {
  const LevelImages images(level1);
  const BilateralTables tables =
      makeBilateralTables(level1, images.inputs.front()->getBufferType(), statistics, window);
  return dispatchSubImages<Next, type>(priority, level1, images, with<attr::InScaleFactor>(tables.scale),
                                       with<attr::InTabulatedSpaceExponentials>(tables.space),
                                       with<attr::InTabulatedRangeExponentials>(tables.range),
                                       with<attr::InHalfKnlSize>(tables.halfSize));
}

}  // namespace vexo::imaproc::filter
