#pragma once

// Building the table that a kernel source exports.

#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/Lines.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// The table of a kernel that works on lines of floats, and hence serves all pairs of types with one
/// function. On AVX, which has no integer vectors, only float to float: SSE2 does the other pairs as well.
template <eConversion conversion>
constexpr processor::KernelTable makeFloatLineTable(processor::KernelFunction function,
                                                    size_t (*scratchSize)(const processor::ProcessingInfo&)) {
  constexpr int float32 = processor::kernelTypeCount - 1;
  processor::KernelTable table = {};
  table.scratchSize = scratchSize;
  table.loaders[float32] = loadLine<float>;
  table.storers[float32] = storeFloatLine;
  table.functions[float32][float32] = function;
#if !defined(VEXO_KERNEL_SET_avx)
  table.loaders[0] = loadLine<unsigned char>;
  table.loaders[1] = loadLine<signed char>;
  table.loaders[2] = loadLine<unsigned short>;
  table.loaders[3] = loadLine<short>;
  table.loaders[4] = loadLine<unsigned>;
  table.loaders[5] = loadLine<int>;
  table.storers[0] = storeLine<unsigned char, conversion>;
  table.storers[1] = storeLine<signed char, conversion>;
  table.storers[2] = storeLine<unsigned short, conversion>;
  table.storers[3] = storeLine<short, conversion>;
  table.storers[4] = storeLine<unsigned, conversion>;
  table.storers[5] = storeLine<int, conversion>;
  for (auto& row : table.functions)
    for (auto& entry : row) entry = function;
#endif
  return table;
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
