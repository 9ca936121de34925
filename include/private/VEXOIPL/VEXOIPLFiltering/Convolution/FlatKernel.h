#pragma once

#include <cmath>
#include <limits>
#include <vector>

#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionPoints.h"
#include "VEXOMath/Kernel.h"

namespace vexo::imaproc::filter {

/// True when the results may be written over the samples at once, because all points lie along one axis,
/// close together: then each sample is loaded once, before it is written over.
template <class Offset>
bool runsInPlace(const KernelOf<Offset>& kernel) {
  std::size_t axes = 0, span = 1;
  for (const KernelReach& reach : kernel.getExtent()) {
    axes += reach.before + reach.after > 0;
    span += reach.before + reach.after;
  }
  const KernelReach x = kernel.getExtent()[0];
  return axes == 0 ||
         (axes == 1 && (span == x.before + x.after + 1 || span <= 2 * kernel.getPoints().size()));
}

/// The points of a kernel in plain arrays, for the run of one strip or one image on the GPU.
class FlatKernel {
public:
  template <class Offset>
  void init(const KernelOf<Offset>& kernel, bool normalize) {
    _points.clear();
    _weights.clear();
    for (const auto& point : kernel.getPoints()) {
      _points.push_back({{point.offset.dx, point.offset.dy, sliceOf(point.offset)}});
      _weights.push_back(point.weight);
    }
    // The sums of a derivative kernel are not divided by what rounding leaves of 0.
    const double sum = kernel.getWeightSum();
    const bool tooSmall = std::abs(sum) < std::sqrt(std::numeric_limits<double>::epsilon());
    _plain = {_points.data(), _weights.data(), static_cast<long long>(_points.size()),
              static_cast<float>(sum), normalize && !tooSmall};
  }
  const ConvolutionPoints& get() const { return _plain; }

private:
  static int sliceOf(const OffsetXY&) { return 0; }
  static int sliceOf(const OffsetXYZ& offset) { return offset.dz; }

  std::vector<ConvolutionPoint> _points;
  std::vector<float> _weights;
  ConvolutionPoints _plain{};
};

}  // namespace vexo::imaproc::filter
