#pragma once

#include "VEXOProcessing/Processor.h"

namespace vexo::imaproc::filter {

/// Which child computes the mean of an image.
template <class OnGpu, class OnHost>
processor::ChildChoice chooseMean(const image::BaseImage& image) {
  return image.isGpuImage() ? processor::choiceOf<OnGpu>("the image is in the memory of the GPU")
                            : processor::choiceOf<OnHost>("the image is in the memory of the host");
}

}  // namespace vexo::imaproc::filter
