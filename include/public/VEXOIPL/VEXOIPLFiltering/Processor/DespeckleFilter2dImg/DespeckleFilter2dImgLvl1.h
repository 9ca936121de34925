#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Attribute/DespeckleAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each plane to level 2.
class VEXO_API DespeckleFilter2dImgLvl1 final
    : public FilterClass<DespeckleFilter2dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InFactor, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::DespeckleFilter2dImgLvl1;

private:
  processor::RulePtr createRule() const override;
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Removes isolated outliers: a pixel v becomes the mean of its neighbours where inFactor * |v - mean| >
/// their standard deviation; all others are kept. So a larger factor replaces more: 0.5 those beyond 2
/// deviations, 1 those beyond one. The neighbours are the pixels of the (2 halfX + 1) x (2 halfY + 1) around
/// it without the pixel itself; mean and deviation are divided by their number. Pixels outside the image are
/// those of the mirrored image (the edge pixel is repeated). Each plane is treated on its own.
///
/// inImg: any of the seven sample types. outImg: the type and the sizes of the input; it may be the input
/// itself. inHalfKnlSizeX, inHalfKnlSizeY: in pixels, from 0 to 32767; 0 and 0, which leave no neighbours,
/// keep all pixels. inFactor: finite; 0 and a negative factor keep all pixels.
///
/// Computed in double precision. A mean is cut to an integer towards zero in an integer image, and rounded to
/// single precision in a float one. A pixel whose window holds a NaN or an infinity is kept.
///
/// Throws an exception derived from vexo::BaseException: an image is null, a half size is too large, the
/// factor is not finite, sizes or type of the output differ, the output overlaps the input without being the
/// same image. The output is then untouched.
VEXO_API image::ImagePtr despeckleFilter2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                              std::uint32_t inHalfKnlSizeY, double inFactor);
VEXO_API void despeckleFilter2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                   std::uint32_t inHalfKnlSizeY, double inFactor,
                                   const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<DespeckleFilter2dImgLvl1> despeckleFilter2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    double inFactor);
VEXO_API boost::shared_ptr<DespeckleFilter2dImgLvl1> despeckleFilter2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    double inFactor, const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(
    const boost::shared_ptr<DespeckleFilter2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
