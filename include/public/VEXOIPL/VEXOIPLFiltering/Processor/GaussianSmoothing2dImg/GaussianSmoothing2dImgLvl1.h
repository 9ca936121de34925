#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Gaussian/GaussianClass.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: makes one kernel for each axis and has the convolution apply them one after the
/// other, the first from the input into the output, the others in place on the output.
class VEXO_API GaussianSmoothing2dImgLvl1 final
    : public GaussianClass<GaussianSmoothing2dImgLvl1, processor::BaseAsync2Processor, KernelXY> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InStdDevX, attr::InStdDevY,
                                              attr::InOptSmoothingGaussianCoverage, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::GaussianSmoothing2dImgLvl1;

private:
  BoolResult retrieveFirstProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
  BoolResult retrieveSecondProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
  double getStepCost(std::size_t step) const override { return getPassCost(1 - step); }
  core::ProviderPtr makePass(const core::BasePriority& priority, const image::ConstImagePtr& from,
                             std::size_t axis) const;
};

/// Gaussian smoothing: each plane of a volume, of a multi-channel image or of a time series is smoothed on
/// its own, along Y first, then along X. Pixels outside the image are those of the mirrored image (the edge
/// pixel is repeated).
///
/// inImg: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes;
/// it may be the input itself. Without it the result has the input's sizes and type.
/// stdDevX, stdDevY: standard deviations in samples, not negative; 0 leaves an axis as it is.
/// stdDev: the same for both axes.
/// coverage: how far the kernels reach: the part of the Gaussian that they cover, in ]0, 1[, and the largest
/// half size (0: no limit). Without it they cover 0.997, about 3 deviations to each side. Half sizes go up to
/// 32767.
///
/// An integer output holds the result of one axis before the next is smoothed: each is rounded half away from
/// zero and keeps the low bits. Sums are taken in single precision: 32-bit integers over 2^24 are rounded to
/// it, even along an axis that is left as it is.
///
/// Throws an exception derived from vexo::BaseException: an image or the coverage is null, a deviation is
/// negative, not finite or too large for a kernel, the coverage is outside ]0, 1[, the sizes of the output
/// differ, the output overlaps the input without being the same image. The output is then untouched.
VEXO_API image::ImagePtr gaussianSmoothing2dImg(const image::ConstImagePtr& inImg, float stdDev);
VEXO_API image::ImagePtr gaussianSmoothing2dImg(
    const image::ConstImagePtr& inImg, float stdDevX, float stdDevY,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage);
VEXO_API void gaussianSmoothing2dImg(const image::ConstImagePtr& inImg, float stdDevX, float stdDevY,
                                     const boost::shared_ptr<const attr::GaussianCoverage>& coverage,
                                     const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<GaussianSmoothing2dImgLvl1> gaussianSmoothing2dImg_async(
    const image::ConstImagePtr& inImg, float stdDev);
VEXO_API boost::shared_ptr<GaussianSmoothing2dImgLvl1> gaussianSmoothing2dImg_async(
    const image::ConstImagePtr& inImg, float stdDevX, float stdDevY,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage);
VEXO_API boost::shared_ptr<GaussianSmoothing2dImgLvl1> gaussianSmoothing2dImg_async(
    const image::ConstImagePtr& inImg, float stdDevX, float stdDevY,
    const boost::shared_ptr<const attr::GaussianCoverage>& coverage, const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(
    const boost::shared_ptr<GaussianSmoothing2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
