#pragma once

#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::logic {

/// Level 1, the whole images: checks the call, creates the output, sends each plane to level 2.
class VEXO_API MaskImgImgLvl1 final : public FilterClass<MaskImgImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg1, attr::InImg2, attr::InMaskImg, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MaskImgImgLvl1;

private:
  processor::RulePtr createRule() const override;
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Choice by a mask: each sample is that of the first image where the mask is not 0, else that of the second.
///
/// inImg1, inImg2: any of the seven sample types, of one size. inMaskImg: 8-bit, of the same size. outImg:
/// any of the types, of the same size; it may be one of the inputs itself. Without it the result has the size
/// and type of inImg1.
///
/// Samples of the output's type are copied exactly. Others are converted: integers saturate; floats are
/// rounded half away from zero and saturate, NaN becomes 0; integers become the nearest float.
///
/// Throws an exception derived from vexo::BaseException: an image is null, sizes differ, the mask is not
/// 8-bit, the output overlaps an input without being the same image. The output is then untouched.
VEXO_API image::ImagePtr maskImgImg(const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2,
                                    const image::ConstImagePtr& inMaskImg);
VEXO_API void maskImgImg(const image::ConstImagePtr& inImg1, const image::ConstImagePtr& inImg2,
                         const image::ConstImagePtr& inMaskImg, const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<MaskImgImgLvl1> maskImgImg_async(const image::ConstImagePtr& inImg1,
                                                            const image::ConstImagePtr& inImg2,
                                                            const image::ConstImagePtr& inMaskImg);
VEXO_API boost::shared_ptr<MaskImgImgLvl1> maskImgImg_async(const image::ConstImagePtr& inImg1,
                                                            const image::ConstImagePtr& inImg2,
                                                            const image::ConstImagePtr& inMaskImg,
                                                            const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<MaskImgImgLvl1>& processor);

}  // namespace vexo::imaproc::logic
