#pragma once

#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonParameters.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Dispatcher.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"

namespace vexo::imaproc::filter {

class InImgMean1 : public processor::Attribute<InImgMean1, double> {
public:
  static constexpr char toolTip[] = "Mean of the first image";
};
class InImgMean2 : public processor::Attribute<InImgMean2, double> {
public:
  static constexpr char toolTip[] = "Mean of the second image";
};
class InFactor : public processor::Attribute<InFactor, double> {
public:
  static constexpr char toolTip[] = "Product of the standard deviations of the images";
};

/// The images agree in all sizes, and the map holds 32-bit floats. An image that is not set yet agrees with
/// any.
processor::RulePtr pearsonRule(const boost::shared_ptr<const processor::BaseImageAttribute>& first,
                               const boost::shared_ptr<const processor::BaseImageAttribute>& second,
                               const boost::shared_ptr<const processor::BaseImageAttribute>& map);

/// What level 2 does whatever its dimension: measures both images, then runs level 3 on strips.
template <class Derived, class Next, class In1, class In2, class Strip1, class Strip2, class OutStrip,
          image::eStripParsingDirection direction>
class VEXO_API PearsonSubImage : public processor::ProcessorClass<Derived, processor::BaseAsync3Processor> {
public:
  using Attributes = processor::AttributeList<In1, In2, attr::OutRealImg>;

private:
  processor::RulePtr createRule() const override {
    return pearsonRule(this->template accessAttribute<In1>(), this->template accessAttribute<In2>(),
                       this->template accessAttribute<attr::OutRealImg>());
  }
  BoolResult retrieveFirstProvider(const core::BasePriority&,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override {
    provider = measure(this->template getStorage<In1>(), _statistics1);
    return true;
  }
  BoolResult retrieveSecondProvider(const core::BasePriority&,
                                    boost::shared_ptr<core::BaseActionProvider>& provider) override {
    provider = measure(this->template getStorage<In2>(), _statistics2);
    return true;
  }
  BoolResult retrieveThirdProvider(const core::BasePriority& priority,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override {
    using image::eStripAllocationType;
    const double factor =
        _statistics1->standardDeviation.getValue() * _statistics2->standardDeviation.getValue();
    provider = processor::dispatchStrips<Next>(
        priority,
        boost::make_shared<ImageStripSplit<Next, const image::BaseImage, Strip1, direction>>(
            this->template getStorage<In1>(), eStripAllocationType::View),
        boost::make_shared<ImageStripSplit<Next, const image::BaseImage, Strip2, direction>>(
            this->template getStorage<In2>(), eStripAllocationType::View),
        boost::make_shared<ImageStripSplit<Next, image::BaseImage, OutStrip, direction>>(
            this->template getStorage<attr::OutRealImg>(), eStripAllocationType::View),
        processor::dynamicNoSplit<Next, InImgMean1>(_statistics1->mean.getValue()),
        processor::dynamicNoSplit<Next, InImgMean2>(_statistics2->mean.getValue()),
        processor::dynamicNoSplit<Next, InFactor>(factor));
    return true;
  }
  void clearIntermediateData() override {
    _statistics1.reset();
    _statistics2.reset();
  }

  using Statistics = boost::shared_ptr<attr::StatsResult>;
  static boost::shared_ptr<core::BaseActionProvider> measure(
      const boost::shared_ptr<const image::BaseImage>& image, Statistics& statistics) {
    statistics = boost::make_shared<attr::StatsResult>();
    return processor::makeSingleActionProvider(
        processor::prepareCall<glbmsr::StatsMsrLvl1, attr::InImg, attr::OutStatsResult>(image, statistics));
  }

  Statistics _statistics1, _statistics2;
};

/// What level 3 does whatever the cut of its strips. The types of the inputs decide on the kernel.
template <class Derived, class Strip1, class Strip2, class OutStrip>
class VEXO_API PearsonStrip : public processor::KernelProcessorClass<Derived> {
public:
  using Attributes = processor::AttributeList<Strip1, Strip2, OutStrip, InImgMean1, InImgMean2, InFactor>;

private:
  void getDataTypeIdColl(processor::DataTypeIdentifierColl& types) const override {
    types.add(
        boost::make_shared<ImageBufferTypeIdentifier>(this->template getStorage<Strip1>()->getBufferType()));
    types.add(
        boost::make_shared<ImageBufferTypeIdentifier>(this->template getStorage<Strip2>()->getBufferType()));
  }
  // The deviation of a constant image is 0: its map is 0, not NaN.
  BoolResult preProcessStrip() override {
    const auto factor = static_cast<float>(this->template getStorage<InFactor>());
    _parameters = {static_cast<float>(this->template getStorage<InImgMean1>()),
                   static_cast<float>(this->template getStorage<InImgMean2>()),
                   factor == 0.0f ? std::numeric_limits<float>::epsilon() : factor};
    return true;
  }
  const void* getKernelParameters() const override { return &_parameters; }

  PearsonParameters _parameters{};
};

}  // namespace vexo::imaproc::filter
