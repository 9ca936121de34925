#include <unistd.h>

#include <atomic>
#include <limits>

#include "VEXOImageIO/Format.h"

namespace vexo::image::io {
namespace {

std::atomic<std::uint64_t> maxImageBytes{0};

std::uint64_t getPhysicalMemory() {
  const long pages = sysconf(_SC_PHYS_PAGES), pageSize = sysconf(_SC_PAGE_SIZE);
  if (pages <= 0 || pageSize <= 0) return std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

}  // namespace

void setMaxImageBytes(std::uint64_t bytes) {
  maxImageBytes = bytes;
}

std::uint64_t getMaxImageBytes() {
  const std::uint64_t bytes = maxImageBytes;
  return bytes ? bytes : getPhysicalMemory();
}

void checkBytes(const File& file, std::uint64_t bytes, const std::string& what) {
  if (const std::uint64_t most = getMaxImageBytes(); bytes > most)
    raiseFileError(VEXO_HERE, file, what, " takes ", bytes, " bytes, more than the limit of ", most,
                   " (setMaxImageBytes, --max-image-bytes)");
}

void checkImageBytes(const File& file, const ImageGeometry& g, eImageBufferType type) {
  std::uint64_t bytes = getSampleSize(type);
  for (const std::size_t size : {g.x, g.y, g.z, g.c, g.t})
    if (__builtin_mul_overflow(bytes, size, &bytes))
      raiseFileError(VEXO_HERE, file, "an image of ", toString(g), " is too large for any memory");
  checkBytes(file, bytes, "an image of " + toString(g) + " of " + toString(type));
}

}  // namespace vexo::image::io
