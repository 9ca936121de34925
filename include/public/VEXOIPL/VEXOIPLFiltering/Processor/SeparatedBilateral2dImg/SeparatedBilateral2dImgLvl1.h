#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralClass.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: measures the range of its values, makes the tables of weights, sends each plane
/// to level 2.
class VEXO_API SeparatedBilateral2dImgLvl1 final
    : public BilateralClass<SeparatedBilateral2dImgLvl1, attr::InImg, eBilateralWindow::Walk> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateral2dImgLvl1;

private:
  BoolResult retrieveThirdProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Separated bilateral filter: passes along X and Y, one after the other, in place of the whole window of
/// bilateral2dImg: its time grows with the half size, not with the window. In a pass each pixel becomes the
/// weighted mean of itself, with weight 1, and of the h pixels to each side. They are weighted by a Gaussian
/// of the distance, exp(-d^2 / (2 spaceSigma^2)), and by the least weight of the differences v - c met on the
/// way to them, exp(-(v - c)^2 / (2 rangeSigma^2)): what lies behind an edge counts little, also where it has
/// the value of the centre again. Pixels outside the image are those of the mirrored image (the edge pixel is
/// repeated). Each plane of a volume, of a multi-channel image or of a time series is filtered on its own.
///
/// inImg: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes; it
/// may be the input itself. Without it the result has the input's sizes and type. Integer outputs are rounded
/// half away from zero and limited to the type. inHalfKnlSize: h, in pixels, up to 32767; 0, or without
/// it: 1.5 spaceSigma, rounded. inSpaceSigma: in pixels; inRangeSigma: in units of the samples.
///
/// An integer output holds the result of one pass before the next: each is rounded half away from zero and
/// limited to the type.
///
/// Both Gaussians are tables, made once. Differences fall into bins of one grey level; over a range of more
/// than 65536 levels, and for float32, into 65536 bins over the range of the whole image. Sums are taken in
/// single precision: 32-bit integers over 2^24 are rounded to it. A sample next to NaN becomes NaN, or 0 in
/// an integer output, which the passes that follow find there; an infinity spoils those that it weighs on.
/// With h = 0 samples are as they are, converted. A space deviation of 0 leaves the pixel alone with its
/// weight; a range deviation of 0 makes the mean of equal samples only. NaN deviations give NaN, respectively
/// ignore values. A negative deviation counts as positive, but gives h = 0 when h is derived from it. The
/// range of the whole image sets the bins: a float image with an infinity, or a value far beyond the others,
/// has them too wide to tell those apart. Deviations too small or too large for their squares count as 0 or
/// as infinite. Memory of a thread: the rows of a walk as floats.
///
/// Throws an exception derived from vexo::BaseException: an image is null, h is too large, the sizes of the
/// output differ, the output overlaps the input without being the same image. The output is then untouched.
VEXO_API image::ImagePtr separatedBilateral2dImg(const image::ConstImagePtr& inImg, double inSpaceSigma,
                                                 double inRangeSigma);
VEXO_API image::ImagePtr separatedBilateral2dImg(const image::ConstImagePtr& inImg,
                                                 std::uint32_t inHalfKnlSize, double inSpaceSigma,
                                                 double inRangeSigma);
VEXO_API void separatedBilateral2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                                      double inSpaceSigma, double inRangeSigma,
                                      const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<SeparatedBilateral2dImgLvl1> separatedBilateral2dImg_async(
    const image::ConstImagePtr& inImg, double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<SeparatedBilateral2dImgLvl1> separatedBilateral2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<SeparatedBilateral2dImgLvl1> separatedBilateral2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma, double inRangeSigma,
    const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(
    const boost::shared_ptr<SeparatedBilateral2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
