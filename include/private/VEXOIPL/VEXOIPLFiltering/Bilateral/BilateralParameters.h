#pragma once

namespace vexo::imaproc::filter {

/// The tables of a bilateral filter: plain data, for kernels.
struct BilateralParameters {
  const float* space;  ///< a weight per place of the window
  const float* range;  ///< a weight per bin of the difference to the centre
  int lastBin;         ///< larger differences have the weight of this one
  float scale;         ///< bins per unit of difference
};

}  // namespace vexo::imaproc::filter
