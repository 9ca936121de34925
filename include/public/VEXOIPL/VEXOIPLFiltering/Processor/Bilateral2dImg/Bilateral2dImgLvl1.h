#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralClass.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: measures the range of its values, makes the tables of weights, sends each plane
/// to level 2.
class VEXO_API Bilateral2dImgLvl1 final
    : public BilateralClass<Bilateral2dImgLvl1, attr::InImg, eBilateralWindow::Square> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Bilateral2dImgLvl1;

private:
  BoolResult retrieveThirdProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Bilateral filter: smooths, but not across edges. Each pixel becomes the mean of the (2 h + 1) x (2 h + 1)
/// pixels around it, weighted by two Gaussians: of the distance, exp(-d^2 / (2 spaceSigma^2)), and of the
/// difference v - c to its own value, exp(-(v - c)^2 / (2 rangeSigma^2)) (Tomasi and Manduchi, 1998). Those
/// outside the image are those of the mirrored image (the edge pixel is repeated). Each plane of a volume, of
/// a multi-channel image or of a time series is filtered on its own.
///
/// inImg: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes; it
/// may be the input itself. Without it the result has the input's sizes and type. Integer outputs are rounded
/// half away from zero and limited to the type. inHalfKnlSize: h, in pixels, up to 32767; 0, or without
/// it: 1.5 spaceSigma, rounded. inSpaceSigma: in pixels; inRangeSigma: in units of the samples.
///
/// Both Gaussians are tables, made once. Differences fall into bins of one grey level; over a range of more
/// than 65536 levels, and for float32, into 65536 bins over the range of the whole image. Sums are taken in
/// single precision: 32-bit integers over 2^24 are rounded to it. A window that holds NaN gives NaN, 0 in
/// integer outputs; one that holds an infinity gives NaN or an infinity. With h = 0 samples are as they are,
/// converted. Otherwise a deviation of 0 or NaN leaves nothing to divide: NaN, 0 in integer outputs. A
/// negative one counts as positive, but gives h = 0 when h is derived from it.
/// The range of the whole image sets the bins: a float image with an infinity, or a value far beyond the
/// others, has them too wide to tell those apart. Deviations too small or too large for their squares count
/// as 0 or as infinite. Memory of a thread, as floats: 5 h rows of up to 256 columns, or 2 h; in place, of
/// whole rows.
///
/// Throws an exception derived from vexo::BaseException: an image is null, h is too large or the window has
/// more than 268435456 pixels, the sizes of the output differ, the output overlaps the input without being
/// the same image. The output is then untouched.
VEXO_API image::ImagePtr bilateral2dImg(const image::ConstImagePtr& inImg, double inSpaceSigma,
                                        double inRangeSigma);
VEXO_API image::ImagePtr bilateral2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                                        double inSpaceSigma, double inRangeSigma);
VEXO_API void bilateral2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                             double inSpaceSigma, double inRangeSigma, const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<Bilateral2dImgLvl1> bilateral2dImg_async(const image::ConstImagePtr& inImg,
                                                                    double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<Bilateral2dImgLvl1> bilateral2dImg_async(const image::ConstImagePtr& inImg,
                                                                    std::uint32_t inHalfKnlSize,
                                                                    double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<Bilateral2dImgLvl1> bilateral2dImg_async(const image::ConstImagePtr& inImg,
                                                                    std::uint32_t inHalfKnlSize,
                                                                    double inSpaceSigma, double inRangeSigma,
                                                                    const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Bilateral2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
