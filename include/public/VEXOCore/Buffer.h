#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "VEXOCore/Export.h"

namespace vexo {

/// Alignment of every buffer handed out here, in bytes: a cache line, and the widest vector.
constexpr std::size_t bufferAlignment = 64;

/// a * b and a + b of sizes; throws a BaseException that names `what` when the result does not fit.
VEXO_API std::size_t checkedMultiply(std::size_t a, std::size_t b, const char* what);
VEXO_API std::size_t checkedAdd(std::size_t a, std::size_t b, const char* what);

/// A block of memory of `size` bytes, uninitialised, aligned to `bufferAlignment`. Large blocks are asked for
/// in huge pages and kept for reuse when released, up to getRecycledMemoryLimit() bytes in the whole process.
/// Throws a BaseException that names the size when the memory cannot be had.
VEXO_API boost::shared_ptr<void> allocateBlock(std::size_t size);

/// Bytes of released blocks that may be kept for reuse; 256 MiB at start. Lowering it frees what exceeds it;
/// 0 keeps nothing.
VEXO_API void setRecycledMemoryLimit(std::size_t bytes);
VEXO_API std::size_t getRecycledMemoryLimit();
/// Bytes kept at this moment.
VEXO_API std::size_t getRecycledMemory();

/// Bytes on the stack while they are few, from allocateBlock beyond that. Uninitialised, aligned.
template <std::size_t StackBytes = 4096>
class HybridBuffer {
public:
  explicit HybridBuffer(std::size_t size) {
    if (size > StackBytes) _block = allocateBlock(size);
    _data = _block ? static_cast<unsigned char*>(_block.get()) : _stack;
  }
  HybridBuffer(const HybridBuffer&) = delete;
  HybridBuffer& operator=(const HybridBuffer&) = delete;

  unsigned char* data() { return _data; }

private:
  alignas(bufferAlignment) unsigned char _stack[StackBytes];
  boost::shared_ptr<void> _block;
  unsigned char* _data;
};

/// One block cut into aligned fragments of the stated sizes (in bytes).
class VEXO_API FragHybridBuffer {
public:
  explicit FragHybridBuffer(const std::vector<std::size_t>& fragmentSizes);

  std::size_t getFragmentCount() const { return _offsets.size(); }
  unsigned char* fragment(std::size_t index) {
    return static_cast<unsigned char*>(_block.get()) + _offsets[index];
  }
  const unsigned char* fragment(std::size_t index) const {
    return static_cast<const unsigned char*>(_block.get()) + _offsets[index];
  }

private:
  std::vector<std::size_t> _offsets;
  boost::shared_ptr<void> _block;
};

}  // namespace vexo
