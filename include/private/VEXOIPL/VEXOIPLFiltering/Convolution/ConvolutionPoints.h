#pragma once

namespace vexo::imaproc::filter {

struct ConvolutionPoint {
  int offset[3];  ///< X, Y, Z
};

/// What a convolution kernel source reads of the caller's kernel: plain data, because of where it is read.
struct ConvolutionPoints {
  const ConvolutionPoint* points;  ///< in the order in which they are summed
  const float* weights;
  long long count;
  float norm;      ///< divides the sums
  bool normalize;  ///< false: sums are stored as they are
};

}  // namespace vexo::imaproc::filter
