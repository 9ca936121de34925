#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc::filter {

/// Level 1, whole images: checks the call, creates the map, sends each plane to level 2.
class VEXO_API PearsonColocalization2dImgLvl1 final
    : public processor::ProcessorClass<PearsonColocalization2dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg1, attr::InImg2, attr::OutRealImg>;
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization2dImgLvl1;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override;
  processor::RulePtr createRule() const override;
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

/// Pearson colocalization map of two images: (a - mean1) * (b - mean2) / (deviation1 * deviation2) for the
/// samples a and b of each pixel. Means and standard deviations (of the population) are those of the plane,
/// so that the mean of the map is the correlation coefficient of the images (Pearson, 1895). Each plane of
/// volumes, multi-channel images or time series is mapped on its own.
///
/// inImg1, inImg2: any of the seven sample types each, and the same sizes. outRealImg: float32, of these
/// sizes; it may be one of the inputs. Without it a new one is returned.
///
/// The map of a plane that is constant in an image is 0. The map is computed in single precision; means and
/// deviations in double.
/// A NaN or an infinity makes the map of its plane NaN. Where products of single precision overflow (values
/// over 1e19) or vanish (deviations under 1e-22), the map is NaN, respectively 0.
///
/// Throws an exception derived from vexo::BaseException: an image is null, sizes differ, the output is not
/// float32 or overlaps an input without being the same image. The output is then untouched.
VEXO_API boost::shared_ptr<image::BaseImage> pearsonColocalization2dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2);
VEXO_API void pearsonColocalization2dImg(const boost::shared_ptr<const image::BaseImage>& inImg1,
                                         const boost::shared_ptr<const image::BaseImage>& inImg2,
                                         const boost::shared_ptr<image::BaseImage>& outRealImg);

/// As above, but returns at once. The processor keeps the images alive and a failure of the run until
/// getAsyncProcessorOutput is called; only values that are refused throw here.
VEXO_API boost::shared_ptr<PearsonColocalization2dImgLvl1> pearsonColocalization2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2);
VEXO_API boost::shared_ptr<PearsonColocalization2dImgLvl1> pearsonColocalization2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2,
    const boost::shared_ptr<image::BaseImage>& outRealImg);
/// Waits for the run and returns its output; throws when the run failed.
VEXO_API boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<PearsonColocalization2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
