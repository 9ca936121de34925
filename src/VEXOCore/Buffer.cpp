#include "VEXOCore/Buffer.h"

#include <sys/mman.h>

#include <cstdlib>
#include <deque>
#include <mutex>

#include "VEXOCore/Log.h"

// The address sanitizer must see every block begin and end. Compilers tell it in one of two ways.
#if defined(__SANITIZE_ADDRESS__)
#define VEXO_PLAIN_BLOCKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEXO_PLAIN_BLOCKS 1
#endif
#endif

namespace vexo {
namespace {

[[noreturn]] void outOfMemory(std::size_t size) {
  raiseWith<OutOfMemoryException>(size, "VEXOCore", VEXO_HERE,
                                  "cannot allocate " + std::to_string(size) + " bytes of memory");
}

#ifndef VEXO_PLAIN_BLOCKS
constexpr std::size_t hugePage = std::size_t(2) << 20;
/// From this size on a block is mapped on its own and recycled; below it malloc is as good.
constexpr std::size_t largeBlock = std::size_t(1) << 20;

/// A mapping that starts on a huge-page boundary, so that all of it but its tail can be backed by huge pages.
void* mapLarge(std::size_t size) {
  const std::size_t reserve = checkedAdd(size, hugePage, "the size of a memory block");
  void* raw = mmap(nullptr, reserve, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (raw == MAP_FAILED) return nullptr;
  const std::size_t head = -reinterpret_cast<std::uintptr_t>(raw) % hugePage;
  if (head != 0) munmap(raw, head);
  char* const data = static_cast<char*>(raw) + head;
  if (const std::size_t tail = reserve - head - size) munmap(data + size, tail);
  madvise(data, size, MADV_HUGEPAGE);
  return data;
}

/// Released large blocks, oldest first. First touch of fresh memory costs more than most filters, so they are
/// kept; when there are too many, those go that were not asked for the longest time.
class Recycler {
public:
  void* take(std::size_t& size) {
    const std::lock_guard<std::mutex> lock(_mutex);
    auto best = _blocks.end();
    for (auto block = _blocks.begin(); block != _blocks.end(); ++block)
      // A block that is much too large would only hide memory from the next caller.
      if (block->size >= size && block->size - size <= size / 8 &&
          (best == _blocks.end() || block->size < best->size))
        best = block;
    if (best == _blocks.end()) return nullptr;
    size = best->size;
    void* data = best->data;
    _blocks.erase(best);
    _kept -= size;
    return data;
  }
  void give(void* data, std::size_t size) {
    const std::lock_guard<std::mutex> lock(_mutex);
    if (size > _limit) {
      munmap(data, size);
      return;
    }
    shrinkTo(_limit - size);
    _blocks.push_back({data, size});
    _kept += size;
  }
  void setLimit(std::size_t bytes) {
    const std::lock_guard<std::mutex> lock(_mutex);
    _limit = bytes;
    shrinkTo(bytes);
  }
  std::size_t limit() const {
    const std::lock_guard<std::mutex> lock(_mutex);
    return _limit;
  }
  std::size_t kept() const {
    const std::lock_guard<std::mutex> lock(_mutex);
    return _kept;
  }

private:
  struct Block {
    void* data;
    std::size_t size;
  };
  void shrinkTo(std::size_t bytes) {
    while (_kept > bytes) {
      munmap(_blocks.front().data, _blocks.front().size);
      _kept -= _blocks.front().size;
      _blocks.pop_front();
    }
  }
  mutable std::mutex _mutex;
  std::deque<Block> _blocks;
  std::size_t _kept = 0;
  std::size_t _limit = std::size_t(256) << 20;
};

Recycler& recycler() {
  // Never destroyed: images held by static objects of the program may be released after this library's
  // statics.
  static auto& instance = *new Recycler;
  return instance;
}
#endif

}  // namespace

std::size_t checkedMultiply(std::size_t a, std::size_t b, const char* what) {
  std::size_t result;
  if (__builtin_mul_overflow(a, b, &result))
    raiseError(VEXO_HERE, "VEXOCore", what, " is too large: ", a, " * ", b,
               " does not fit the address space");
  return result;
}

std::size_t checkedAdd(std::size_t a, std::size_t b, const char* what) {
  std::size_t result;
  if (__builtin_add_overflow(a, b, &result))
    raiseError(VEXO_HERE, "VEXOCore", what, " is too large: ", a, " + ", b,
               " does not fit the address space");
  return result;
}

boost::shared_ptr<void> allocateBlock(std::size_t size) {
#ifndef VEXO_PLAIN_BLOCKS
  if (size >= largeBlock) {
    std::size_t rounded = checkedAdd(size, 4095, "the size of a memory block") / 4096 * 4096;
    void* data = recycler().take(rounded);
    if (!data) data = mapLarge(rounded);
    if (!data) outOfMemory(size);
    return boost::shared_ptr<void>(data, [rounded](void* p) { recycler().give(p, rounded); });
  }
#endif
  const std::size_t rounded = checkedAdd(size ? size : 1, bufferAlignment - 1, "the size of a memory block") /
                              bufferAlignment * bufferAlignment;
  void* data = std::aligned_alloc(bufferAlignment, rounded);
  if (!data) outOfMemory(size);
  return boost::shared_ptr<void>(data, [](void* p) { std::free(p); });
}

#ifdef VEXO_PLAIN_BLOCKS
void setRecycledMemoryLimit(std::size_t) {}
std::size_t getRecycledMemoryLimit() {
  return 0;
}
std::size_t getRecycledMemory() {
  return 0;
}
#else
void setRecycledMemoryLimit(std::size_t bytes) {
  recycler().setLimit(bytes);
}
std::size_t getRecycledMemoryLimit() {
  return recycler().limit();
}
std::size_t getRecycledMemory() {
  return recycler().kept();
}
#endif

FragHybridBuffer::FragHybridBuffer(const std::vector<std::size_t>& fragmentSizes) {
  std::size_t total = 0;
  for (const std::size_t size : fragmentSizes) {
    _offsets.push_back(total);
    const std::size_t end = checkedAdd(total, size, "the size of a fragmented buffer");
    total = checkedAdd(end, bufferAlignment - 1, "the size of a fragmented buffer") / bufferAlignment *
            bufferAlignment;
  }
  _block = allocateBlock(total);
}

}  // namespace vexo
