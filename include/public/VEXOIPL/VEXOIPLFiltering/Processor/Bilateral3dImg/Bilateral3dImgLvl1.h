#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralClass.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: measures the range of its values, makes the tables of weights, sends each volume
/// to level 2.
class VEXO_API Bilateral3dImgLvl1 final
    : public BilateralClass<Bilateral3dImgLvl1, attr::InImg3d, eBilateralWindow::Cube> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Bilateral3dImgLvl1;

private:
  BoolResult retrieveThirdProvider(const core::BasePriority& priority,
                                   boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

/// bilateral2dImg in volumes: the window has (2 h + 1)^3 voxels, deviations and h are in voxels, and each
/// volume of a multi-channel image or of a time series is filtered on its own. Types, ranges, NaN, deviations
/// that leave no weight and failures are those of bilateral2dImg.
///
/// A strip is at least 16 rows, or four times h, of all slices. In place, the rows that strips read from each
/// other are saved first, and each thread holds the results of a strip: up to the memory of another image.
/// Memory of a thread besides, as floats: three times up to 256 columns, or 2 h, of a strip and its margins
/// in h + 1 slices.
VEXO_API boost::shared_ptr<image::BaseImage> bilateral3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<image::BaseImage> bilateral3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
    double inRangeSigma);
VEXO_API void bilateral3dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                             std::uint32_t inHalfKnlSize, double inSpaceSigma, double inRangeSigma,
                             const boost::shared_ptr<image::BaseImage>& outImg);

/// As above, but returns at once. The processor keeps the images alive and a failure of the run until
/// getAsyncProcessorOutput is called; only values that are refused throw here.
VEXO_API boost::shared_ptr<Bilateral3dImgLvl1> bilateral3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, double inSpaceSigma, double inRangeSigma);
VEXO_API boost::shared_ptr<Bilateral3dImgLvl1> bilateral3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
    double inRangeSigma);
VEXO_API boost::shared_ptr<Bilateral3dImgLvl1> bilateral3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSize, double inSpaceSigma,
    double inRangeSigma, const boost::shared_ptr<image::BaseImage>& outImg);
/// Waits for the run and returns its output; throws when the run failed.
VEXO_API boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<Bilateral3dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
