// Any bytes as a TIFF file.

#include "FileTarget.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vexo::fuzz::checkFile(data, size);
  return 0;
}
