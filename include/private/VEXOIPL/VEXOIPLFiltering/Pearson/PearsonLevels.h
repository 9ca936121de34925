#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Pearson/PearsonClass.h"
#include "VEXOIPL/VEXOIPLFiltering/Pearson/PearsonParameters.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

struct InImgMean1 : processor::Attribute<InImgMean1, double> {
  static constexpr char toolTip[] = "Mean of the first image";
};
struct InImgMean2 : processor::Attribute<InImgMean2, double> {
  static constexpr char toolTip[] = "Mean of the second image";
};
/// Not attr::InFactor, that of the despeckle filter.
struct InFactor : processor::Attribute<InFactor, double> {
  static constexpr char toolTip[] = "Product of the standard deviations of the images";
};

/// As kernels read them. The deviation of a constant image is 0: its map is 0, not NaN.
PearsonParameters makePearsonParameters(double mean1, double mean2, double factor);

/// What level 3 does whatever the cut of its strips. The types of the inputs decide on the kernel.
template <class Derived, class Strip1, class Strip2, class OutStrip, class Source = Derived>
class VEXO_API PearsonLvl3 : public processor::KernelProcessorClass<Derived, Source> {
public:
  using Attributes = processor::AttributeList<Strip1, Strip2, OutStrip, InImgMean1, InImgMean2, InFactor>;

private:
  void getDataTypeIdColl(processor::DataTypeIdentifierColl& types) const override {
    types.add(
        boost::make_shared<ImageBufferTypeIdentifier>(this->template getStorage<Strip1>()->getBufferType()));
    types.add(
        boost::make_shared<ImageBufferTypeIdentifier>(this->template getStorage<Strip2>()->getBufferType()));
  }
  BoolResult preProcessStrip() override {
    _parameters =
        makePearsonParameters(this->template getStorage<InImgMean1>(),
                              this->template getStorage<InImgMean2>(), this->template getStorage<InFactor>());
    return true;
  }
  const void* getKernelParameters() const override { return &_parameters; }

  PearsonParameters _parameters{};
};

/// What level 2 does whatever its dimension: measures both images, then runs level 3 on strips.
template <class Derived, class Next, class In1, class In2, image::eStripParsingDirection direction>
class VEXO_API PearsonLvl2 : public PearsonClass<Derived, processor::BaseAsync3Processor> {
public:
  using Attributes = processor::AttributeList<In1, In2, attr::OutRealImg>;

private:
  BoolResult retrieveFirstProvider(const core::BasePriority&, core::ProviderPtr& provider) override {
    provider = glbmsr::statsMsrStep(this->template getStorage<In1>(), _statistics1);
    return true;
  }
  BoolResult retrieveSecondProvider(const core::BasePriority&, core::ProviderPtr& provider) override {
    provider = glbmsr::statsMsrStep(this->template getStorage<In2>(), _statistics2);
    return true;
  }
  BoolResult retrieveThirdProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    const double factor =
        _statistics1->standardDeviation.getValue() * _statistics2->standardDeviation.getValue();
    StripCut cut;
    cut.direction = direction;
    provider = dispatchStrips<Next>(priority, static_cast<const Derived&>(*this), cut,
                                    with<InImgMean1>(_statistics1->mean.getValue()),
                                    with<InImgMean2>(_statistics2->mean.getValue()), with<InFactor>(factor));
    return true;
  }
  void clearIntermediateData() override {
    _statistics1.reset();
    _statistics2.reset();
  }

  boost::shared_ptr<attr::StatsResult> _statistics1, _statistics2;
};

}  // namespace vexo::imaproc::filter
