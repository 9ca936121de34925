#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>

#include "VEXOCore/Export.h"

namespace vexo::core {

/// True when the library was built with a CUDA toolkit, a device answers, and support was not switched off.
VEXO_API bool isGpuSupportActivated();
/// Switches the use of the GPU off, or on again where a device answers.
VEXO_API void activateGpuSupport(bool activate);

/// Device memory. Every function throws a BaseException that says what is missing when there is no GPU
/// support.
VEXO_API boost::shared_ptr<void> allocateOnGpu(std::size_t size);
/// Copies `rowCount` rows of `rowBytes`; strides in bytes.
VEXO_API void copyToGpu(void* device, std::size_t deviceStride, const void* host, std::size_t hostStride,
                        std::size_t rowBytes, std::size_t rowCount);
VEXO_API void copyFromGpu(void* host, std::size_t hostStride, const void* device, std::size_t deviceStride,
                          std::size_t rowBytes, std::size_t rowCount);

}  // namespace vexo::core
