#pragma once

#include "VEXOCore/BoolResult.h"
#include "VEXOIPL/VEXOIPLFiltering/Convolution/FlatKernel.h"
#include "VEXOImage/Border.h"
#include "VEXOImage/CudaImage.h"

namespace vexo::imaproc::filter {

/// Convolution of a plane or a volume on the GPU, with a kernel and a border of the host.
BoolResult convolveOnGpu(const image::BaseImage& in, const image::BaseImage& out, const FlatKernel& kernel,
                         const image::BorderPolicy& border);

}  // namespace vexo::imaproc::filter
