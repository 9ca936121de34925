#pragma once

#include <cstdint>
#include <string>

#include "VEXOImage/ImageBufferType.h"

namespace vexo::image::io {

/// What a compression of TIFF can do.
struct TiffCodec {
  std::uint64_t largestExpansion;  ///< bytes that one stored byte can stand for, at most
  bool isPerBlock;  ///< true for each strip and tile, else for the whole file, as constant tiles cost nothing
  bool mayLeaveOut;      ///< its decoder may leave out samples of damaged data
  bool isWhole = false;  ///< its decoder holds a block as a whole
};
TiffCodec getCodec(std::uint16_t compression);

/// Why samples cannot be read, and the way round; empty when they can, `type` then holds them.
std::string findType(std::uint16_t bits, std::uint16_t format, eImageBufferType& type);
std::string findObstacle(std::uint16_t photometric, std::uint16_t compression);

}  // namespace vexo::image::io
