#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralClass.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: measures the range of its values, makes the tables of weights, sends each volume
/// to level 2.
class VEXO_API Bilateral3dImgLvl1 final
    : public BilateralClass<Bilateral3dImgLvl1, attr::InImg3d, eBilateralWindow::Cube> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Bilateral3dImgLvl1;

private:
  BoolResult retrieveThirdProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// bilateral2dImg in volumes: the window has (2 h + 1)^3 voxels, deviations and h are in voxels, and each
/// volume of a multi-channel image or of a time series is filtered on its own. Types, ranges, NaN, deviations
/// that leave no weight and failures are those of bilateral2dImg.
///
/// A strip is at least 16 rows, or four times h, of all slices. In place, the rows that strips read from each
/// other are saved first, and each thread holds the results of a strip: up to the memory of another image.
/// Memory of a thread besides, as floats: three times up to 256 columns, or 2 h, of a strip and its margins
/// in h + 1 slices.
VEXO_API image::ImagePtr bilateral3dImg(const image::ConstImagePtr& inImg, double inSpaceSigma,
                                        double inRangeSigma);
VEXO_API image::ImagePtr bilateral3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                                        double inSpaceSigma, double inRangeSigma);
VEXO_API void bilateral3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSize,
                             double inSpaceSigma, double inRangeSigma, const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<Bilateral3dImgLvl1> bilateral3dImg_async(const image::ConstImagePtr& inImg,
                                                                    double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<Bilateral3dImgLvl1> bilateral3dImg_async(const image::ConstImagePtr& inImg,
                                                                    std::uint32_t inHalfKnlSize,
                                                                    double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<Bilateral3dImgLvl1> bilateral3dImg_async(const image::ConstImagePtr& inImg,
                                                                    std::uint32_t inHalfKnlSize,
                                                                    double inSpaceSigma, double inRangeSigma,
                                                                    const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Bilateral3dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
