// Convolution on the GPU: one thread per column of a row, which sums the points in their own order.

#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionCuda.h"

namespace vexo::imaproc::filter {
namespace {

constexpr int blockThreads = 256;

struct Sizes {
  long long x, y, z;
};

__device__ long long mapIndex(image::eBorder border, long long i, long long n) {
  if (i >= 0 && i < n) return i;
  if (border == image::eBorder::Constant) return -1;
  if (border == image::eBorder::Replicate) return i < 0 ? 0 : n - 1;
  const long long period = border == image::eBorder::Circular ? n : 2 * n;
  long long m = i % period;
  if (m < 0) m += period;
  return m < n ? m : 2 * n - 1 - m;
}

/// Rounded half away from zero, the low bits kept of an integer that saturates at 32 bits, or 64 for samples
/// of 32 bits; NaN is 0.
template <class T>
__device__ void storeWrapped(void* out, long long i, float value) {
  constexpr float limit = sizeof(T) < 4 ? 0x1p31f : 0x1p63f;
  const float rounded = __fadd_rn(value, copysignf(0x1.fffffep-2f, value));
  const long long whole = rounded >= limit ? -1 : rounded > -limit ? static_cast<long long>(rounded) : 0;
  static_cast<T*>(out)[i] = static_cast<T>(static_cast<unsigned long long>(whole));
}

__device__ void store(void* out, int type, long long i, float value) {
  switch (type) {
    case 0:
      return storeWrapped<unsigned char>(out, i, value);
    case 1:
      return storeWrapped<signed char>(out, i, value);
    case 2:
      return storeWrapped<unsigned short>(out, i, value);
    case 3:
      return storeWrapped<short>(out, i, value);
    case 4:
      return storeWrapped<unsigned>(out, i, value);
    case 5:
      return storeWrapped<int>(out, i, value);
    default:
      static_cast<float*>(out)[i] = value;
  }
}

// Products and sums by name: the compiler would else contract them, and the bits would not be those of the
// host.
template <class T>
__global__ void convolve(const T* in, void* out, int outType, Sizes size, ConvolutionPoints kernel,
                         image::eBorder border, float constant) {
  const long long x = blockIdx.x * static_cast<long long>(blockThreads) + threadIdx.x;
  if (x >= size.x) return;
  for (long long row = blockIdx.y; row < size.y * size.z; row += gridDim.y) {
    const long long y = row % size.y, z = row / size.y;
    float sum = 0;
    for (long long i = 0; i < kernel.count; ++i) {
      const ConvolutionPoint p = kernel.points[i];
      const long long px = mapIndex(border, x + p.offset[0], size.x);
      const long long py = mapIndex(border, y + p.offset[1], size.y);
      const long long pz = mapIndex(border, z + p.offset[2], size.z);
      const bool inside = px >= 0 && py >= 0 && pz >= 0;
      const float value = inside ? static_cast<float>(in[(pz * size.y + py) * size.x + px]) : constant;
      sum = __fadd_rn(sum, __fmul_rn(kernel.weights[i], value));
    }
    if (kernel.normalize) sum = __fdiv_rn(sum, kernel.norm);
    store(out, outType, row * size.x + x, sum);
  }
}

template <class T>
void launch(const GpuSamples& in, void* out, int outType, const ConvolutionPoints& kernel,
            image::eBorder border, float constant) {
  const Sizes size{in.size[0], in.size[1], in.size[2]};
  const long long rows = size.y * size.z;
  const dim3 grid(static_cast<unsigned>((size.x + blockThreads - 1) / blockThreads),
                  static_cast<unsigned>(rows < 65535 ? rows : 65535));
  convolve<T>
      <<<grid, blockThreads>>>(static_cast<const T*>(in.data), out, outType, size, kernel, border, constant);
}

}  // namespace

const char* launchConvolution(const GpuSamples& in, const GpuSamples& out, const ConvolutionPoints& kernel,
                              image::eBorder border, float constant) {
  // In place the results go elsewhere first: a thread may still read what another writes.
  constexpr int sampleSizes[] = {1, 1, 2, 2, 4, 4, 4};
  const size_t bytes = static_cast<size_t>(out.size[0] * out.size[1] * out.size[2]) * sampleSizes[out.type];
  void* target = out.data;
  if (in.data == out.data)
    if (const cudaError_t status = cudaMalloc(&target, bytes)) return cudaGetErrorString(status);

  switch (in.type) {
    case 0:
      launch<unsigned char>(in, target, out.type, kernel, border, constant);
      break;
    case 1:
      launch<signed char>(in, target, out.type, kernel, border, constant);
      break;
    case 2:
      launch<unsigned short>(in, target, out.type, kernel, border, constant);
      break;
    case 3:
      launch<short>(in, target, out.type, kernel, border, constant);
      break;
    case 4:
      launch<unsigned>(in, target, out.type, kernel, border, constant);
      break;
    case 5:
      launch<int>(in, target, out.type, kernel, border, constant);
      break;
    default:
      launch<float>(in, target, out.type, kernel, border, constant);
  }
  cudaError_t status = cudaGetLastError();
  if (!status && target != out.data) status = cudaMemcpy(out.data, target, bytes, cudaMemcpyDeviceToDevice);
  if (!status) status = cudaDeviceSynchronize();
  if (target != out.data) cudaFree(target);
  return status ? cudaGetErrorString(status) : nullptr;
}

}  // namespace vexo::imaproc::filter
