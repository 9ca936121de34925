#pragma once

// The CUDA side of the convolution of a plane or a volume.

#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionPoints.h"
#include "VEXOImage/StripView.h"

namespace vexo::imaproc::filter {

/// Where the samples lie on the GPU, rows and slices without gaps; plain, because CUDA sources read it.
struct GpuSamples {
  void* data;
  int type;           ///< in the order of eImageBufferType
  long long size[3];  ///< X, Y, Z
};

/// The work; arrays of the kernel lie on the GPU. Input and output may be the same. Answers null, or a text
/// that says why it could not. The sums are those of the host, bit by bit.
const char* launchConvolution(const GpuSamples& in, const GpuSamples& out, const ConvolutionPoints& kernel,
                              image::eBorder border, float constant);

}  // namespace vexo::imaproc::filter
