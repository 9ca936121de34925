#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionOnGpu.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "VEXOCore/Gpu.h"
#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionCuda.h"

namespace vexo::imaproc::filter {

#ifdef VEXO_HAS_CUDA_KERNELS
namespace {

GpuSamples samplesOf(const image::BaseImage& image) {
  return {dynamic_cast<const image::CudaImage&>(image).getDeviceData(),
          static_cast<int>(image.getBufferType()),
          {static_cast<long long>(image.getSizeX()), static_cast<long long>(image.getSizeY()),
           static_cast<long long>(image.getSizeZ())}};
}

template <class T>
boost::shared_ptr<void> copyOnGpu(const T* values, long long count) {
  const std::size_t bytes = static_cast<std::size_t>(std::max(count, 1LL)) * sizeof(T);
  const auto memory = core::allocateOnGpu(bytes);
  if (count > 0) core::copyToGpu(memory.get(), bytes, values, bytes, bytes, 1);
  return memory;
}

/// The constant of a border as a sample of the image.
float constantOf(const image::BorderPolicy& border, image::eImageBufferType type) {
  return image::visitBufferType(type, [&](auto zero) {
    using T = decltype(zero);
    const double value = border.getConstant();
    if constexpr (std::is_same_v<T, float>) {
      return static_cast<float>(value);
    } else {
      if (value != value) return 0.0f;
      const double low = std::numeric_limits<T>::lowest(), high = std::numeric_limits<T>::max();
      return static_cast<float>(std::clamp(std::round(value), low, high));
    }
  });
}

}  // namespace

BoolResult convolveOnGpu(const image::BaseImage& in, const image::BaseImage& out, const FlatKernel& kernel,
                         const image::BorderPolicy& border) {
  ConvolutionPoints points = kernel.get();
  const auto offsets = copyOnGpu(points.points, points.count),
             weights = copyOnGpu(points.weights, points.count);
  points.points = static_cast<const ConvolutionPoint*>(offsets.get());
  points.weights = static_cast<const float*>(weights.get());
  const char* failure = launchConvolution(samplesOf(in), samplesOf(out), points, border.getBorder(),
                                          constantOf(border, in.getBufferType()));
  return failure ? BoolResult::failure(failure) : BoolResult(true);
}
#else
BoolResult convolveOnGpu(const image::BaseImage&, const image::BaseImage&, const FlatKernel&,
                         const image::BorderPolicy&) {
  return BoolResult::failure(
      "this build has no convolution for images on the GPU; copy the image to the host");
}
#endif

}  // namespace vexo::imaproc::filter
