#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

// The mean filter is the example that the other filters follow; its sources explain what each piece is for.

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each plane to level 2.
///
/// Everything that can be deduced from the two lines below (creation, copy, serial form, description, command
/// line) is supplied by ProcessorClass; that OutImg has the sizes of InImg, and is made like it when the
/// caller gives none, by FilterClass. A filter that wants it otherwise overrides createRule() or
/// initOutputs().
class VEXO_API MeanSmoothing2dImgLvl1 final
    : public FilterClass<MeanSmoothing2dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::OutImg, attr::OutOptWk1RealGpuImg>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing2dImgLvl1;

private:
  processor::ChoiceColl foreseeChoices() const override;
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Box (moving-average) smoothing: each pixel becomes the mean of the (2 halfX + 1) x (2 halfY + 1) pixels
/// around it. Pixels outside the image are those of the mirrored image (the edge pixel is repeated). Each
/// plane of a volume, of a multi-channel image or of a time series is smoothed on its own.
///
/// inImg: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes; it
/// may be the input itself. Without it the result has the input's sizes and type. inHalfKnlSizeX,
/// inHalfKnlSizeY: in pixels, from 0 (0 and 0 copy the image, converted) to 32767.
///
/// The mean is computed in single precision by running sums, so its cost does not depend on the window.
/// Integer outputs are rounded half away from zero and keep the low bits: 300.2 becomes 44 in an 8-bit
/// output. A NaN or an infinity spoils the pixels to its right and below, not only those whose window holds
/// it, until the end of its strip.
///
/// Throws an exception derived from vexo::BaseException: an image is null, a half size is too large, the
/// sizes of the output differ, the output overlaps the input without being the same image. The output is then
/// untouched.
VEXO_API image::ImagePtr meanSmoothing2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                            std::uint32_t inHalfKnlSizeY);
VEXO_API void meanSmoothing2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                 std::uint32_t inHalfKnlSizeY, const image::ImagePtr& outImg);

/// As above, but returns at once. The processor keeps the images alive and a failure of the run until
/// getAsyncProcessorOutput is called; only values that are refused throw here.
VEXO_API boost::shared_ptr<MeanSmoothing2dImgLvl1> meanSmoothing2dImg_async(const image::ConstImagePtr& inImg,
                                                                            std::uint32_t inHalfKnlSizeX,
                                                                            std::uint32_t inHalfKnlSizeY);
VEXO_API boost::shared_ptr<MeanSmoothing2dImgLvl1> meanSmoothing2dImg_async(const image::ConstImagePtr& inImg,
                                                                            std::uint32_t inHalfKnlSizeX,
                                                                            std::uint32_t inHalfKnlSizeY,
                                                                            const image::ImagePtr& outImg);
/// Waits for the run and returns its output; throws when the run failed.
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<MeanSmoothing2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
