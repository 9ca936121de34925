#include "FailingMemory.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

// The C library's own, under their other names.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
}

namespace vexo::test {
namespace {

std::atomic<bool> active{false};
std::atomic<long> count{0}, failing{0}, blocks{0};
std::atomic<bool> later{false};
void* frames[24];
std::atomic<int> frameCount{0};
thread_local bool inside = false;

bool fails() {
  if (!active || inside) return false;
  const long number = ++count;
  if (number != failing && !(later && number > failing)) return false;
  inside = true;
  frameCount = backtrace(frames, 24);
  inside = false;
  errno = ENOMEM;
  return true;
}

void* counted(void* block) {
  if (block) ++blocks;
  return block;
}

}  // namespace

void failAllocation(long number, bool andLater) {
  void* warm[1];
  backtrace(warm, 1);  // it loads a library at its first call
  count = 0;
  failing = number;
  later = andLater;
  active = true;
}

long endFailing() {
  active = false;
  return count;
}

long countBlocks() {
  return blocks;
}

namespace {

const char* nameOfLibrary(void* address) {
  Dl_info info;
  if (!dladdr(address, &info) || !info.dli_fname) return "";
  const char* name = std::strrchr(info.dli_fname, '/');
  return name ? name + 1 : info.dli_fname;
}

}  // namespace

const char* failedLibrary() {
  // After the frames of this file: those of the C and C++ libraries only pass the call on.
  for (int i = 2; i < frameCount; ++i) {
    const char* name = nameOfLibrary(frames[i]);
    if (std::strncmp(name, "libstdc++", 9) != 0 && std::strncmp(name, "libc.", 5) != 0) return name;
  }
  return "";
}

}  // namespace vexo::test

using vexo::test::blocks;
using vexo::test::counted;
using vexo::test::fails;

extern "C" {

void* malloc(std::size_t size) {
  return fails() ? nullptr : counted(__libc_malloc(size));
}
void* calloc(std::size_t n, std::size_t size) {
  return fails() ? nullptr : counted(__libc_calloc(n, size));
}
void* realloc(void* old, std::size_t size) {
  if (fails()) return nullptr;
  void* block = __libc_realloc(old, size);
  if (!old && block) ++blocks;
  if (old && size == 0) --blocks;
  return block;
}
void* memalign(std::size_t alignment, std::size_t size) {
  return fails() ? nullptr : counted(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = memalign(alignment, size);
  return *block ? 0 : ENOMEM;
}
void free(void* block) {
  if (block) --blocks;
  __libc_free(block);
}
void* mmap(void* at, std::size_t size, int protection, int flags, int descriptor, off_t offset) {
  if ((flags & MAP_ANONYMOUS) && fails()) return MAP_FAILED;
  return reinterpret_cast<void*>(syscall(SYS_mmap, at, size, protection, flags, descriptor, offset));
}

}  // extern "C"
