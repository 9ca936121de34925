#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each volume to level 2.
class VEXO_API HistoMedian3dImgLvl1 final
    : public processor::ProcessorClass<HistoMedian3dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg3d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::InInputRange, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::HistoMedian3dImgLvl1;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override;
  processor::RulePtr createRule() const override;
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

/// Median of a box by one histogram that is swept along the rows: each voxel becomes
/// the middle one of the (2 halfX + 1) x (2 halfY + 1) x (2 halfZ + 1) voxels around it in order of value.
/// Those outside the image are those of the mirrored image (the edge voxel is repeated). Each volume of a
/// multi-channel image or of a time series is filtered on its own.
///
/// inImg: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes; it
/// may be the input itself. Without it the result has the input's sizes and type. inHalfKnlSizeX,
/// inHalfKnlSizeY, inHalfKnlSizeZ: in voxels, from 0 to 32767. inInputRange: the range of the samples,
/// minimum <= maximum; for integers both are truncated towards 0, an infinite one stands for the largest
/// float.
///
/// Samples are counted in 256 levels. Over a range of up to 255 integers have a level each, and the result is
/// the median, exactly. Over a larger one, and for float32, a level is (sample - minimum) * 256 / (maximum -
/// minimum + 1), truncated, and the result the lower edge of the median's level, minimum + level * (maximum -
/// minimum + 1) / 256, for integers truncated: it differs from the median by less than a level. Samples
/// outside the range count in the nearest level, NaN in the lowest. The result is converted to the output's
/// type: it saturates in integer outputs, a fraction is rounded half away from zero.
///
/// The time per voxel grows with the rows of the window, of all its slices.
/// In place, the slices that strips read from each other are saved first, and each thread holds the results
/// of a strip, at least four slices: up to the memory of another image.
///
/// Throws an exception derived from vexo::BaseException: an image or the range is null, the range is reversed
/// or NaN, a half size is too large, the sizes of the output differ, the output overlaps the input without
/// being the same image. The output is then untouched.
VEXO_API boost::shared_ptr<image::BaseImage> histoMedian3dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API void histoMedian3dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                               std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                               std::uint32_t inHalfKnlSizeZ,
                               const boost::shared_ptr<const attr::Range>& inInputRange,
                               const boost::shared_ptr<image::BaseImage>& outImg);

/// As above, but returns at once. The processor keeps the images alive and a failure of the run until
/// getAsyncProcessorOutput is called; only values that are refused throw here.
VEXO_API boost::shared_ptr<HistoMedian3dImgLvl1> histoMedian3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API boost::shared_ptr<HistoMedian3dImgLvl1> histoMedian3dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const boost::shared_ptr<const attr::Range>& inInputRange,
    const boost::shared_ptr<image::BaseImage>& outImg);
/// Waits for the run and returns its output; throws when the run failed.
VEXO_API boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<HistoMedian3dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
