#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1: smooths each slice into the output, then the output along Z.
class VEXO_API MeanSmoothing3dImgLvl1 final
    : public FilterClass<MeanSmoothing3dImgLvl1, processor::BaseAsync2Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg3d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing3dImgLvl1;

private:
  processor::ChoiceColl foreseeChoices() const override;
  BoolResult retrieveFirstProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
  BoolResult retrieveSecondProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Box (moving-average) smoothing of volumes: each voxel becomes the mean of the (2 halfX + 1) x (2 halfY +
/// 1) x (2 halfZ + 1) voxels around it. Voxels outside the volume are those of the mirrored volume (the edge
/// voxel is repeated). Each volume of a multi-channel image or of a time series is smoothed on its own.
///
/// inImg3d: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes;
/// it may be the input itself. Without it the result has the input's sizes and type. inHalfKnlSizeX,
/// inHalfKnlSizeY, inHalfKnlSizeZ: in voxels, from 0 to 32767.
///
/// The slices are smoothed into the output first, as meanSmoothing2dImg does, then the output along Z; so
/// integer outputs are rounded twice. With inHalfKnlSizeZ 0 the result is that of meanSmoothing2dImg. A NaN
/// or an infinity spoils the voxels to its right, below and behind, not only those whose window holds it.
///
/// Throws an exception derived from vexo::BaseException: an image is null, a half size is too large, the
/// sizes of the output differ, the output overlaps the input without being the same image. The output is then
/// untouched.
VEXO_API image::ImagePtr meanSmoothing3dImg(const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX,
                                            std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ);
VEXO_API void meanSmoothing3dImg(const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX,
                                 std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                                 const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<MeanSmoothing3dImgLvl1> meanSmoothing3dImg_async(
    const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    std::uint32_t inHalfKnlSizeZ);
VEXO_API boost::shared_ptr<MeanSmoothing3dImgLvl1> meanSmoothing3dImg_async(
    const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    std::uint32_t inHalfKnlSizeZ, const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<MeanSmoothing3dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
