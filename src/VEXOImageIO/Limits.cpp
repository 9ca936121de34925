#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <limits>

#include "VEXOImageIO/Format.h"

namespace vexo::image::io {
namespace {

std::atomic<std::uint64_t> maxImageBytes{0};

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

std::uint64_t getPhysicalMemory() {
  const long pages = sysconf(_SC_PHYS_PAGES), pageSize = sysconf(_SC_PAGE_SIZE);
  if (pages <= 0 || pageSize <= 0) return unlimited;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

/// Half, as a run needs memory for its input and its output.
std::uint64_t getDefault() {
  static const std::uint64_t bytes =
      std::min(getPhysicalMemory(), getGroupMemory("/proc/self/cgroup", "/sys/fs/cgroup")) / 2;
  return bytes;
}

}  // namespace

std::uint64_t getGroupMemory(const std::string& list, const std::string& root) {
  std::uint64_t least = unlimited;
  std::ifstream lines(list);
  // "0::/group" names a group of version 2, "4:memory:/group" one of version 1.
  for (std::string line; std::getline(lines, line);) {
    const std::size_t first = line.find(':'), second = line.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos) continue;
    const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
    const bool isNew = line.compare(0, second + 1, "0::") == 0;
    if (!isNew && controllers.find(",memory,") == std::string::npos) continue;
    const std::string base = isNew ? root : root + "/memory",
                      name = isNew ? "/memory.max" : "/memory.limit_in_bytes";
    // The groups around it hold too. Within a container the path may be that outside, and only they are
    // there.
    for (std::string group = line.substr(second + 1);; group.resize(group.rfind('/'))) {
      std::uint64_t bytes = 0;
      if (std::ifstream(base + group + name) >> bytes) least = std::min(least, bytes);
      if (group.find('/') == std::string::npos) break;
    }
  }
  return least;
}

void setMaxImageBytes(std::uint64_t bytes) {
  maxImageBytes = bytes;
}

std::uint64_t getMaxImageBytes() {
  const std::uint64_t bytes = maxImageBytes;
  return bytes ? bytes : getDefault();
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
