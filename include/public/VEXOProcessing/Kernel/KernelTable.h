#pragma once

// The contract between kernel sources and the frame: plain data only, because kernel sources are compiled for
// instruction sets that the processor may lack and must not carry library code along.

#include <stddef.h>

#include "VEXOImage/StripView.h"

namespace vexo::processor {

/// Reads n samples of the row (y, z) from column x on, as floats; every position may lie in the margins.
using LoadLine = void (*)(float* line, const image::StripSource& source, ptrdiff_t x, ptrdiff_t y,
                          ptrdiff_t z, ptrdiff_t n);
/// Converts n floats to the samples of the row (y, z) from column x on.
using StoreLine = void (*)(const image::StripTarget& target, const float* line, ptrdiff_t x, ptrdiff_t y,
                           ptrdiff_t z, ptrdiff_t n);

/// What a kernel receives for one strip.
struct ProcessingInfo {
  const image::StripSource* sources;  ///< in the order of the input attributes
  const image::StripTarget* targets;  ///< in the order of the output attributes
  const LoadLine* loaders;            ///< one per source
  const StoreLine* storers;           ///< one per target
  const void* parameters;             ///< what the third-level class passes, a plain structure of its own
  bool inPlace;                       ///< a target is the image that a source reads
  bool integers;                      ///< the first source and the first target hold integers
  bool unsignedInput;                 ///< those of the first source have no sign
  unsigned char* scratch;             ///< KernelTable::scratchSize bytes, aligned to 64, uninitialised
};

/// Computes one strip. Answers null, or a text that says why it could not.
using KernelFunction = const char* (*)(const ProcessingInfo& info);

constexpr int kernelTypeCount = 7;  ///< sample types, in the order of eImageBufferType

/// What one kernel object exports: its functions by sample types, null where it has none for a pair.
struct KernelTable {
  KernelFunction functions[kernelTypeCount][kernelTypeCount];  ///< [type of sources[0]][type of targets[0]]
  LoadLine loaders[kernelTypeCount];
  StoreLine storers[kernelTypeCount];
  size_t (*scratchSize)(const ProcessingInfo& info);  ///< called with scratch unset
  KernelFunction inputFunctions[kernelTypeCount];     ///< [type of sources[0]]: functions without targets
};

}  // namespace vexo::processor

// A kernel source defines Kernels<the third-level class>::table() of the instruction set that it is compiled
// for.
namespace vexo {
namespace portable {
template <class Lvl3>
struct Kernels {
  static const processor::KernelTable& table();
};
}  // namespace portable
namespace avx {
template <class Lvl3>
struct Kernels {
  static const processor::KernelTable& table();
};
}  // namespace avx
namespace avx2 {
template <class Lvl3>
struct Kernels {
  static const processor::KernelTable& table();
};
}  // namespace avx2
namespace avx512 {
template <class Lvl3>
struct Kernels {
  static const processor::KernelTable& table();
};
}  // namespace avx512
}  // namespace vexo
