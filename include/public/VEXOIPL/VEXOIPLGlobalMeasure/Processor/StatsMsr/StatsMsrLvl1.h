#pragma once

#include "VEXOIPL/VEXOIPLGlobalMeasure/StatsResult.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/VEXOIPLGlobalMeasureLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc::glbmsr {

struct StatsMsrSums;

/// Level 1, the whole image: sends each plane or volume to level 2, then combines what they found.
class VEXO_API StatsMsrLvl1 final
    : public processor::ProcessorClass<StatsMsrLvl1, processor::BaseAsync2Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::OutStatsResult>;
  static constexpr auto toolTipId = eProcessorMessage::StatsMsrLvl1;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override;
  BoolResult retrieveFirstProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
  BoolResult retrieveSecondProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
  void clearIntermediateData() override { _sums.clear(); }

  std::vector<boost::shared_ptr<StatsMsrSums>> _sums;  ///< of each plane or volume
};

/// Minimum, maximum, mean, standard deviation (of the population: divided by the count), sum and count of all
/// samples of an image, its planes, channels and frames together.
///
/// inImg: any of the seven sample types, in the memory of the host. outStatsResult: the result to fill;
/// without it one is created. Values are in units of the samples.
///
/// Integer samples are added up exactly. For float32 the sum is off by less than 1e-12 of the sum of the
/// magnitudes, and the deviation by less than 1e-12 of itself, however large an offset the samples have. NaN
/// is left out of minimum and maximum, which are 0 when there is nothing else, and makes sum, mean and
/// deviation NaN; infinities make the deviation NaN.
///
/// The bits of the result do not depend on the number of threads, the instruction set or strides.
///
/// Throws an exception derived from vexo::BaseException: an argument is null, the image is on the GPU. The
/// result is then untouched.
VEXO_API boost::shared_ptr<attr::StatsResult> statsMsr(const image::ConstImagePtr& inImg);
VEXO_API void statsMsr(const image::ConstImagePtr& inImg,
                       const boost::shared_ptr<attr::StatsResult>& outStatsResult);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<StatsMsrLvl1> statsMsr_async(const image::ConstImagePtr& inImg);
VEXO_API boost::shared_ptr<StatsMsrLvl1> statsMsr_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<attr::StatsResult>& outStatsResult);
VEXO_API boost::shared_ptr<attr::StatsResult> getAsyncProcessorOutput(
    const boost::shared_ptr<StatsMsrLvl1>& processor);

/// The measure as a step of another run: `statistics` is made, and filled when the step has run.
VEXO_API core::ProviderPtr statsMsrStep(const image::ConstImagePtr& image,
                                        boost::shared_ptr<attr::StatsResult>& statistics);

}  // namespace vexo::imaproc::glbmsr
