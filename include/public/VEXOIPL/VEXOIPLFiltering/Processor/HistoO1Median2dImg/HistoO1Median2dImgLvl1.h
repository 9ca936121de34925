#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Attribute/MedianAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each plane to level 2.
class VEXO_API HistoO1Median2dImgLvl1 final
    : public FilterClass<HistoO1Median2dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InInputRange, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::HistoO1Median2dImgLvl1;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Median by histograms, in constant time per pixel: each pixel becomes
/// the middle one of the (2 halfX + 1) x (2 halfY + 1) pixels around it in order of value. Those outside
/// the image are those of the mirrored image (the edge pixel is repeated). Each plane of a volume, of a
/// multi-channel image or of a time series is filtered on its own.
///
/// inImg: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes; it
/// may be the input itself. Without it the result has the input's sizes and type. inHalfKnlSizeX,
/// inHalfKnlSizeY: in pixels, from 0 to 32767. inInputRange: the range of the samples, minimum <= maximum,
/// both finite; for integers both are truncated towards 0, one beyond the largest float is cut to it.
///
/// Samples are counted in 256 levels. Over a range of up to 255 integers have a level each, and the result is
/// the median, exactly. Over a larger one, and for float32, a level is (sample - minimum) * 256 / (maximum -
/// minimum + 1), truncated, and the result the lower edge of the median's level, minimum + level * (maximum -
/// minimum + 1) / 256, for integers truncated: it differs from the median by less than a level. Levels
/// are cut to 0 to 255, which may reach beyond the range; NaN has level 0. The result is converted to the
/// output's type: it saturates in integer outputs, a fraction is rounded half away from zero.
///
/// The time per pixel does not grow with the window; the memory of a thread does, with its rows and columns.
/// histoO1MedianXStrip2dImg is the same for images of 1000 columns and more.
///
/// Throws an exception derived from vexo::BaseException: an image or the range is null, the range is reversed
/// or not finite, a half size is too large, the sizes of the output differ, the output overlaps the input
/// without being the same image. The output is then untouched.
VEXO_API image::ImagePtr histoO1Median2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                            std::uint32_t inHalfKnlSizeY,
                                            const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API void histoO1Median2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                 std::uint32_t inHalfKnlSizeY,
                                 const boost::shared_ptr<const attr::Range>& inInputRange,
                                 const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<HistoO1Median2dImgLvl1> histoO1Median2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API boost::shared_ptr<HistoO1Median2dImgLvl1> histoO1Median2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    const boost::shared_ptr<const attr::Range>& inInputRange, const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<HistoO1Median2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
