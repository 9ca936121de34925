#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each volume to level 2.
class VEXO_API GenericMedian3dImgLvl1 final
    : public FilterClass<GenericMedian3dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg3d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::GenericMedian3dImgLvl1;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Median of a window of any size: each voxel becomes the middle one of the
/// (2 halfX + 1) x (2 halfY + 1) x (2 halfZ + 1) voxels around it in order of value.
/// Those outside the image are those of the mirrored image (the edge voxel is repeated). Each
/// volume of a multi-channel image or of a time series is filtered on its own.
///
/// inImg: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes; it
/// may be the input itself. Without it the result has the input's sizes and type. inHalfKnlSizeX,
/// inHalfKnlSizeY, inHalfKnlSizeZ: in voxels, from 0 to 32767; the window may hold 4294967295 samples.
///
/// Time grows with the samples of the window and with the bits of a sample, and memory with the rows of the
/// window; half sizes 1, 1, 1 are far faster than others. The median is one of the samples, exactly, whatever
/// the type; it is then converted to the output's type. In integer outputs it saturates: 300 becomes 255 in
/// an 8-bit output; a fraction is rounded half away from zero, and NaN becomes 0. Where a window holds NaN,
/// the result is some sample of the window.
/// In place, the slices that strips read from each other are saved first, and each thread holds the results
/// of a strip, at least four slices: up to the memory of another image.
///
/// Throws an exception derived from vexo::BaseException: an image is null, a half size or the window is too
/// large, the sizes of the output differ, the output overlaps the input without being the same image. The
/// output is then untouched.
VEXO_API image::ImagePtr genericMedian3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                            std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ);
VEXO_API void genericMedian3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                 std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                                 const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<GenericMedian3dImgLvl1> genericMedian3dImg_async(const image::ConstImagePtr& inImg,
                                                                            std::uint32_t inHalfKnlSizeX,
                                                                            std::uint32_t inHalfKnlSizeY,
                                                                            std::uint32_t inHalfKnlSizeZ);
VEXO_API boost::shared_ptr<GenericMedian3dImgLvl1> genericMedian3dImg_async(const image::ConstImagePtr& inImg,
                                                                            std::uint32_t inHalfKnlSizeX,
                                                                            std::uint32_t inHalfKnlSizeY,
                                                                            std::uint32_t inHalfKnlSizeZ,
                                                                            const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<GenericMedian3dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
