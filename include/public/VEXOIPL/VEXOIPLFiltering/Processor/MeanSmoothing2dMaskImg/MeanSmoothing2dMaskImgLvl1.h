#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each plane to level 2.
class VEXO_API MeanSmoothing2dMaskImgLvl1 final
    : public FilterClass<MeanSmoothing2dMaskImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InMaskImg, attr::InHalfKnlSizeX,
                                              attr::InHalfKnlSizeY, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MeanSmoothing2dMaskImgLvl1;

private:
  processor::RulePtr createRule() const override;
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Box (moving-average) smoothing restricted to a mask: each pixel whose mask is not 0 becomes the mean of
/// those pixels of the (2 halfX + 1) x (2 halfY + 1) around it whose mask is not 0. The others keep the
/// input's value. Outside the image, image and mask are mirrored (the edge pixel is repeated). Each plane is
/// smoothed on its own.
///
/// inImg: any of the seven sample types. inMaskImg: 8-bit, of the input's sizes. outImg: any of the seven
/// types, whatever the input's, and the input's sizes; it may be the input or the mask itself, which costs a
/// copy of it. Without it the result has the input's sizes and type. inHalfKnlSizeX, inHalfKnlSizeY: in
/// pixels, from 0 to 32767.
///
/// The means are computed in single precision by running sums, so their cost does not depend on the window.
/// In integer outputs they are rounded half away from zero and keep the low bits; values that are kept
/// saturate. What lies outside the mask enters no mean; a NaN or an infinity inside it spoils means to its
/// right and below, not only those whose window holds it.
///
/// Throws an exception derived from vexo::BaseException: an image is null, a half size is too large, the
/// sizes of the output or the mask differ, the mask is not 8-bit, the output overlaps an input without being
/// the same image. The output is then untouched.
VEXO_API image::ImagePtr meanSmoothing2dMaskImg(const image::ConstImagePtr& inImg,
                                                const image::ConstImagePtr& inMaskImg,
                                                std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY);
VEXO_API void meanSmoothing2dMaskImg(const image::ConstImagePtr& inImg, const image::ConstImagePtr& inMaskImg,
                                     std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                                     const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<MeanSmoothing2dMaskImgLvl1> meanSmoothing2dMaskImg_async(
    const image::ConstImagePtr& inImg, const image::ConstImagePtr& inMaskImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY);
VEXO_API boost::shared_ptr<MeanSmoothing2dMaskImgLvl1> meanSmoothing2dMaskImg_async(
    const image::ConstImagePtr& inImg, const image::ConstImagePtr& inMaskImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(
    const boost::shared_ptr<MeanSmoothing2dMaskImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
