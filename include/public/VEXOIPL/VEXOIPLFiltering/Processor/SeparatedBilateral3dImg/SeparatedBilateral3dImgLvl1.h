#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralClass.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: measures the range of its values, makes the tables of weights, sends each volume
/// to level 2.
class VEXO_API SeparatedBilateral3dImgLvl1 final
    : public BilateralClass<SeparatedBilateral3dImgLvl1, attr::InImg3d, eBilateralWindow::Walk> {
public:
  static constexpr auto toolTipId = eProcessorMessage::SeparatedBilateral3dImgLvl1;

private:
  BoolResult retrieveThirdProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// separatedBilateral2dImg in volumes: passes along X, Y and Z; deviations and h are in voxels, and each
/// volume of a multi-channel image or of a time series is filtered on its own. Types, ranges, NaN, deviations
/// that leave no weight, rounding between passes and failures are those of separatedBilateral2dImg.
VEXO_API image::ImagePtr separatedBilateral3dImg(const image::ConstImagePtr& inImg, double inSpaceSigma,
                                                 double inRangeSigma);
VEXO_API image::ImagePtr separatedBilateral3dImg(const image::ConstImagePtr& inImg,
                                                 std::uint32_t inHalfKnlSize, double inSpaceSigma,
                                                 double inRangeSigma);
VEXO_API void separatedBilateral3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                                      double inSpaceSigma, double inRangeSigma,
                                      const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<SeparatedBilateral3dImgLvl1> separatedBilateral3dImg_async(
    const image::ConstImagePtr& inImg, double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<SeparatedBilateral3dImgLvl1> separatedBilateral3dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<SeparatedBilateral3dImgLvl1> separatedBilateral3dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma, double inRangeSigma,
    const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(
    const boost::shared_ptr<SeparatedBilateral3dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
