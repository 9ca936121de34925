// Any bytes as a PNG file. The check sums of its chunks are put right first: otherwise nearly every change
// would be refused before anything looks at it.

#include <zlib.h>

#include <vector>

#include "FileTarget.h"

namespace {

std::uint32_t readNumber(const std::uint8_t* p) {
  return std::uint32_t(p[0]) << 24 | std::uint32_t(p[1]) << 16 | std::uint32_t(p[2]) << 8 | p[3];
}

void repairCheckSums(std::vector<std::uint8_t>& file) {
  constexpr std::size_t signature = 8, lengthAndName = 8, checkSum = 4;
  for (std::size_t at = signature; file.size() - at >= lengthAndName + checkSum;) {
    const std::uint32_t length = readNumber(&file[at]);
    if (length > file.size() - at - lengthAndName - checkSum) return;
    const auto sum = crc32(0, &file[at + 4], 4 + length);
    at += lengthAndName + length;
    for (int shift = 24; shift >= 0; shift -= 8) file[at++] = static_cast<std::uint8_t>(sum >> shift);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::uint8_t> file(data, data + size);
  if (size > 8) repairCheckSums(file);
  vexo::fuzz::checkFile(file.data(), file.size());
  return 0;
}
