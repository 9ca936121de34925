#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Pearson/PearsonClass.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 1, whole images: checks the call, creates the map, sends each plane to level 2.
class VEXO_API PearsonColocalization2dImgLvl1 final
    : public PearsonClass<PearsonColocalization2dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg1, attr::InImg2, attr::OutRealImg>;
  static constexpr auto toolTipId = eProcessorMessage::PearsonColocalization2dImgLvl1;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
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
VEXO_API image::ImagePtr pearsonColocalization2dImg(const image::ConstImagePtr& inImg1,
                                                    const image::ConstImagePtr& inImg2);
VEXO_API void pearsonColocalization2dImg(const image::ConstImagePtr& inImg1,
                                         const image::ConstImagePtr& inImg2,
                                         const image::ImagePtr& outRealImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<PearsonColocalization2dImgLvl1> pearsonColocalization2dImg_async(
    const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2);
VEXO_API boost::shared_ptr<PearsonColocalization2dImgLvl1> pearsonColocalization2dImg_async(
    const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2,
    const image::ImagePtr& outRealImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(
    const boost::shared_ptr<PearsonColocalization2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
