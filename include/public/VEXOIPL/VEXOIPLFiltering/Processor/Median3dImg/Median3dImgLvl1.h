#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Median/MedianChooser.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1: computes nothing itself, but runs the median that is fastest for the window and the samples;
/// where the range of the samples decides, it measures that first. explain() tells which and why.
class VEXO_API Median3dImgLvl1 final : public FilterClass<Median3dImgLvl1, MedianChooser> {
public:
  using Attributes = processor::AttributeList<attr::InImg3d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::OutImg,
                                              attr::InOutOptAllow8bitsCompression, attr::InOptInputRange>;
  static constexpr auto toolTipId = eProcessorMessage::Median3dImgLvl1;

private:
  Step chooseByHalfSizes() const override;
  Step chooseByLevels(const LevelUse& levels) const override;
  /// What has become of the permission.
  void noteLevels(const LevelUse& levels) override;
};

/// Median of a box: each voxel becomes the middle one of the (2 halfX + 1) x (2 halfY + 1) x (2 halfZ + 1)
/// voxels around it in order of value. Those outside the image are those of the mirrored image (the edge
/// voxel is repeated). Each volume of a multi-channel image or of a time series is filtered on its own.
///
/// inImg3d: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes;
/// it may be the input itself. Without it the result has the input's sizes and type. inHalfKnlSizeX,
/// inHalfKnlSizeY, inHalfKnlSizeZ: in voxels, from 0 to 32767.
///
/// The implementation is chosen: for windows other than 3 x 3 x 3 voxels over integers whose range (of the
/// whole image, all volumes together) is at most 256 one that counts in 256 levels; else one that compares
/// values, whose time grows faster with the window. Both are exact but for a range of exactly 256: there 257
/// values share 256 levels, and a median may come out one too low. The median is then converted to the
/// output's type. In integer outputs it saturates: 300 becomes 255 in an 8-bit output; a fraction is rounded
/// half away from zero, and NaN becomes 0. Where a window holds NaN, the result is some sample of the window.
///
/// Throws an exception derived from vexo::BaseException: an image is null, a half size or the window is too
/// large, the sizes of the output differ, the output overlaps the input without being the same image. The
/// output is then untouched.
VEXO_API image::ImagePtr median3dImg(const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX,
                                     std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ);
VEXO_API void median3dImg(const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX,
                          std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                          const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<Median3dImgLvl1> median3dImg_async(const image::ConstImagePtr& inImg3d,
                                                              std::uint32_t inHalfKnlSizeX,
                                                              std::uint32_t inHalfKnlSizeY,
                                                              std::uint32_t inHalfKnlSizeZ);
VEXO_API boost::shared_ptr<Median3dImgLvl1> median3dImg_async(const image::ConstImagePtr& inImg3d,
                                                              std::uint32_t inHalfKnlSizeX,
                                                              std::uint32_t inHalfKnlSizeY,
                                                              std::uint32_t inHalfKnlSizeZ,
                                                              const image::ImagePtr& outImg);

/// Trades exactness for speed where the window is not 3 x 3 x 3 voxels: float32 samples, and integers over a
/// range of more than 256, count in 256 levels too, each (maximum - minimum + 1) / 256 wide. The result is
/// then the lower edge of the median's level (for integers truncated), less than a level away from the
/// median; NaN counts in the lowest level. Returns false where the range of the samples was measured and
/// needed no compression, else true.
VEXO_API bool median3dImg_allow8bitsCompression(const image::ConstImagePtr& inImg3d,
                                                std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                                                std::uint32_t inHalfKnlSizeZ, const image::ImagePtr& outImg);
VEXO_API boost::shared_ptr<Median3dImgLvl1> median3dImg_allow8bitsCompression_async(
    const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    std::uint32_t inHalfKnlSizeZ, const image::ImagePtr& outImg);

VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Median3dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
