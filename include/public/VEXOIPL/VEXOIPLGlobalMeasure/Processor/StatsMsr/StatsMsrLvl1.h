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
  BoolResult retrieveFirstProvider(const core::BasePriority& priority,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override;
  BoolResult retrieveSecondProvider(const core::BasePriority& priority,
                                    boost::shared_ptr<core::BaseActionProvider>& provider) override;
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
VEXO_API boost::shared_ptr<attr::StatsResult> statsMsr(
    const boost::shared_ptr<const image::BaseImage>& inImg);
VEXO_API void statsMsr(const boost::shared_ptr<const image::BaseImage>& inImg,
                       const boost::shared_ptr<attr::StatsResult>& outStatsResult);

/// As above, but returns at once. The processor keeps image and result alive and a failure of the run until
/// getAsyncProcessorOutput is called; only values that are refused throw here.
VEXO_API boost::shared_ptr<StatsMsrLvl1> statsMsr_async(
    const boost::shared_ptr<const image::BaseImage>& inImg);
VEXO_API boost::shared_ptr<StatsMsrLvl1> statsMsr_async(
    const boost::shared_ptr<const image::BaseImage>& inImg,
    const boost::shared_ptr<attr::StatsResult>& outStatsResult);
/// Waits for the run and returns its result; throws when the run failed.
VEXO_API boost::shared_ptr<attr::StatsResult> getAsyncProcessorOutput(
    const boost::shared_ptr<StatsMsrLvl1>& processor);

}  // namespace vexo::imaproc::glbmsr
