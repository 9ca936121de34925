#include "VEXOImageIO/TiffSamples.h"

#include <tiffio.h>

namespace vexo::image::io {
namespace {

const char* describeFormat(std::uint16_t format) {
  switch (format) {
    case SAMPLEFORMAT_INT:
      return "signed integer";
    case SAMPLEFORMAT_IEEEFP:
      return "floating point";
    case SAMPLEFORMAT_COMPLEXINT:
    case SAMPLEFORMAT_COMPLEXIEEEFP:
      return "complex";
    default:
      return "unsigned integer";
  }
}

const char* findWayRound(std::uint16_t bits, std::uint16_t format) {
  if (format == SAMPLEFORMAT_IEEEFP) return "convert them to 32-bit floating point";
  if (format == SAMPLEFORMAT_COMPLEXINT || format == SAMPLEFORMAT_COMPLEXIEEEFP)
    return "save the real and the imaginary part as images of 32-bit floating point";
  return bits < 8    ? "convert them to 8 bits"
         : bits < 16 ? "convert them to 16 bits"
                     : "convert them to 32 bits";
}

}  // namespace

TiffCodec getCodec(std::uint16_t compression) {
  switch (compression) {
    case COMPRESSION_NONE:
      return {1, true, false};
    case COMPRESSION_PACKBITS:
      return {64, true, false};
    case COMPRESSION_LZW:
      return {4096, true, false};
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
      return {1040, true, false};
    case COMPRESSION_ZSTD:
      return {65536, true, true};
    case COMPRESSION_LZMA:
      return {16384, true, true};
    case COMPRESSION_WEBP:
    case COMPRESSION_LERC:
      return {std::uint64_t(1) << 18, false, true, true};
    case COMPRESSION_PIXARLOG:
      return {4096, true, true, true};
    default:  // JPEG, and what deflate is part of
      return {4096, true, true};
  }
}

std::string findType(std::uint16_t bits, std::uint16_t format, eImageBufferType& type) {
  const bool isSigned = format == SAMPLEFORMAT_INT;
  const bool isInteger = isSigned || format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID;
  if (format == SAMPLEFORMAT_IEEEFP && bits == 32)
    type = eImageBufferType::Real32;
  else if (isInteger && bits == 8)
    type = isSigned ? eImageBufferType::Int8 : eImageBufferType::UInt8;
  else if (isInteger && bits == 16)
    type = isSigned ? eImageBufferType::Int16 : eImageBufferType::UInt16;
  else if (isInteger && bits == 32)
    type = isSigned ? eImageBufferType::Int32 : eImageBufferType::UInt32;
  else
    return std::to_string(bits) + "-bit " + describeFormat(format) +
           " samples are not supported: " + findWayRound(bits, format);
  return "";
}

std::string findObstacle(std::uint16_t photometric, std::uint16_t compression) {
  switch (compression) {
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4:
    case COMPRESSION_CCITTRLEW:
    case COMPRESSION_JBIG:
    case COMPRESSION_NEXT:
    case COMPRESSION_THUNDERSCAN:
      return "the TIFF file is damaged: its compression (" + std::to_string(compression) +
             ") holds no samples of 8 bits and more";
    default:
      if (!TIFFIsCODECConfigured(compression))
        return "the compression " + std::to_string(compression) +
               " is not supported: save the image with another, such as deflate";
  }
  switch (photometric) {
    case PHOTOMETRIC_PALETTE:
      // Indices of a colour map are no intensities, and whether the map is mere decoration only the user
      // knows.
      return "palette colour is not supported: convert the image to grey or RGB";
    case PHOTOMETRIC_YCBCR:
      if (compression == COMPRESSION_JPEG) return "";
      return "YCbCr colour is supported in JPEG compression only: convert the image to RGB";
    case PHOTOMETRIC_CFA:
      return "colour filter arrays are not supported: convert the image to RGB";
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
      return "logarithmic samples are not supported: convert them to 32-bit floating point";
    default:
      return "";
  }
}

}  // namespace vexo::image::io
