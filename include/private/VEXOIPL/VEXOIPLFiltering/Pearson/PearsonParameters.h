#pragma once

namespace vexo::imaproc::filter {

/// Plain data, for kernels.
struct PearsonParameters {
  float mean1, mean2;
  float factor;  ///< product of the deviations, not 0
};

}  // namespace vexo::imaproc::filter
