#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Attribute/ConvolutionAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each volume to level 2.
class VEXO_API Convolution3dImgLvl1 final
    : public FilterClass<Convolution3dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg3d, attr::InKnlXYZ, attr::InNormalize,
                                              attr::InOptConvolBorder3d, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::Convolution3dImgLvl1;

private:
  void initOutputs(processor::OutputInitializerColl& initializers) const override {
    promoteInput(*this, initializers);
  }
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// Convolution: each voxel becomes the sum of its neighbours' values, weighted by the points of the kernel; a
/// point reads the voxel at its offset (the kernel is not turned round). Each volume of a multi-channel image
/// or of a time series is convolved on its own.
///
/// inImg: any of the seven sample types. outImg: any of them, whatever the input's, and the input's sizes; it
/// may be the input itself. Without it the result is a 32-bit float image of the input's sizes. kernel:
/// offsets within +-32767 per axis, in any order; repeated ones each count. Without points the result is 0.
/// normalize: divide by the sum of the weights, unless that is nearly 0 (below 1.5e-8 in magnitude).
/// border: how voxels outside the image are obtained; mirror when not given.
///
/// Sums are in single precision, in the order of the kernel's points. Integer outputs are rounded half away
/// from zero and keep the low bits: 300.4 becomes 44 in an 8-bit output. NaN becomes 0 there.
///
/// Throws an exception derived from vexo::BaseException: an image, the kernel or the border is null, the
/// constant of the border is not finite, an offset is too far, the sizes of the output differ, the output
/// overlaps the input without being the same image. The output is then untouched.
VEXO_API image::ImagePtr convolution3dImg(const image::ConstImagePtr& inImg,
                                          const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize);
VEXO_API image::ImagePtr convolution3dImg(const image::ConstImagePtr& inImg,
                                          const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
                                          const boost::shared_ptr<const image::Border3dPolicy>& border);
VEXO_API void convolution3dImg(const image::ConstImagePtr& inImg,
                               const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
                               const image::ImagePtr& outImg);
VEXO_API void convolution3dImg(const image::ConstImagePtr& inImg,
                               const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
                               const boost::shared_ptr<const image::Border3dPolicy>& border,
                               const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize);
VEXO_API boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
    const boost::shared_ptr<const image::Border3dPolicy>& border);
VEXO_API boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
    const image::ImagePtr& outImg);
VEXO_API boost::shared_ptr<Convolution3dImgLvl1> convolution3dImg_async(
    const image::ConstImagePtr& inImg, const boost::shared_ptr<const KernelXYZ>& kernel, bool normalize,
    const boost::shared_ptr<const image::Border3dPolicy>& border, const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Convolution3dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
