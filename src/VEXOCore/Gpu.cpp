#include "VEXOCore/Gpu.h"

#include <atomic>

#include "VEXOCore/Log.h"

#ifdef VEXO_HAS_CUDA
#include <cuda_runtime_api.h>
#endif

namespace vexo::core {
namespace {

std::atomic<bool> gpuWanted{true};

#ifdef VEXO_HAS_CUDA
bool deviceAnswers() {
  static const bool answers = [] {
    int count = 0;
    return cudaGetDeviceCount(&count) == cudaSuccess && count > 0;
  }();
  return answers;
}

void check(cudaError_t status, const char* what) {
  if (status != cudaSuccess) raiseError(VEXO_HERE, "VEXOCore", what, ": ", cudaGetErrorString(status));
}
#endif

void requireGpu(const char* what) {
  if (isGpuSupportActivated()) return;
#ifdef VEXO_HAS_CUDA
  const char* why = deviceAnswers() ? "GPU support is switched off" : "no GPU answers";
#else
  const char* why = "the library was built without a CUDA toolkit";
#endif
  raiseError(VEXO_HERE, "VEXOCore", what, ": ", why);
}

}  // namespace

bool isGpuSupportActivated() {
#ifdef VEXO_HAS_CUDA
  return gpuWanted && deviceAnswers();
#else
  return false;
#endif
}

void activateGpuSupport(bool activate) {
  gpuWanted = activate;
}

boost::shared_ptr<void> allocateOnGpu(std::size_t size) {
  requireGpu("cannot allocate GPU memory");
#ifdef VEXO_HAS_CUDA
  void* memory = nullptr;
  check(cudaMalloc(&memory, size), "cannot allocate GPU memory");
  return boost::shared_ptr<void>(memory, [](void* p) { cudaFree(p); });
#else
  (void)size;
  return {};
#endif
}

void copyToGpu(void* device, std::size_t deviceStride, const void* host, std::size_t hostStride,
               std::size_t rowBytes, std::size_t rowCount) {
  requireGpu("cannot copy to the GPU");
#ifdef VEXO_HAS_CUDA
  check(cudaMemcpy2D(device, deviceStride, host, hostStride, rowBytes, rowCount, cudaMemcpyHostToDevice),
        "cannot copy to the GPU");
#else
  (void)device, (void)deviceStride, (void)host, (void)hostStride, (void)rowBytes, (void)rowCount;
#endif
}

void copyFromGpu(void* host, std::size_t hostStride, const void* device, std::size_t deviceStride,
                 std::size_t rowBytes, std::size_t rowCount) {
  requireGpu("cannot copy from the GPU");
#ifdef VEXO_HAS_CUDA
  check(cudaMemcpy2D(host, hostStride, device, deviceStride, rowBytes, rowCount, cudaMemcpyDeviceToHost),
        "cannot copy from the GPU");
#else
  (void)device, (void)deviceStride, (void)host, (void)hostStride, (void)rowBytes, (void)rowCount;
#endif
}

}  // namespace vexo::core
