#pragma once

#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLogMessages.h"
#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::imaproc::logic {

/// Level 1, the whole images: checks the call, creates the output, sends each plane to level 2.
class VEXO_API MaskImgImgLvl1 final
    : public processor::ProcessorClass<MaskImgImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg1, attr::InImg2, attr::InMaskImg, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::MaskImgImgLvl1;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override;
  processor::RulePtr createRule() const override;
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
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
VEXO_API boost::shared_ptr<image::BaseImage> maskImgImg(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2,
    const boost::shared_ptr<const image::BaseImage>& inMaskImg);
VEXO_API void maskImgImg(const boost::shared_ptr<const image::BaseImage>& inImg1,
                         const boost::shared_ptr<const image::BaseImage>& inImg2,
                         const boost::shared_ptr<const image::BaseImage>& inMaskImg,
                         const boost::shared_ptr<image::BaseImage>& outImg);

/// As above, but returns at once. The processor keeps the images alive and a failure of the run until
/// getAsyncProcessorOutput is called; only values that are refused throw here.
VEXO_API boost::shared_ptr<MaskImgImgLvl1> maskImgImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2,
    const boost::shared_ptr<const image::BaseImage>& inMaskImg);
VEXO_API boost::shared_ptr<MaskImgImgLvl1> maskImgImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg1,
    const boost::shared_ptr<const image::BaseImage>& inImg2,
    const boost::shared_ptr<const image::BaseImage>& inMaskImg,
    const boost::shared_ptr<image::BaseImage>& outImg);
/// Waits for the run and returns its output; throws when the run failed.
VEXO_API boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<MaskImgImgLvl1>& processor);

}  // namespace vexo::imaproc::logic
