#include <algorithm>
#include <cstring>
#include <limits>

#include "VEXOCore/Buffer.h"
#include "VEXOImageIO/Format.h"
#include "VEXOImageIO/TiffHandle.h"

namespace vexo::image::io {
namespace {

constexpr std::size_t stripBytes = std::size_t(1) << 20;
/// libtiff walks no further than this.
constexpr std::size_t mostPages = std::size_t(1) << 20;

std::size_t getRowBytes(const Image& image) {
  return image.getSizeX() * getSampleSize(image.getBufferType());
}

std::size_t getRowsPerStrip(const Image& image) {
  return std::clamp<std::size_t>(stripBytes / getRowBytes(image), 1, image.getSizeY());
}

/// True when the file may pass the 4 GiB that the offsets of a classic file reach.
bool needsBigTiff(const Image& image) {
  const ImageGeometry& g = image.getGeometry();
  const double pages = static_cast<double>(g.z) * static_cast<double>(g.c) * static_cast<double>(g.t);
  const double strips = static_cast<double>(g.y) / static_cast<double>(getRowsPerStrip(image)) + 1;
  const double pageBytes =
      static_cast<double>(getRowBytes(image)) * static_cast<double>(g.y) + 8 * strips + 1024;
  return pages * pageBytes > 4.2e9;
}

int getSampleFormat(eImageBufferType type) {
  return visitBufferType(type, [](auto sample) -> int {
    using Sample = decltype(sample);
    if (std::is_floating_point_v<Sample>) return SAMPLEFORMAT_IEEEFP;
    return std::is_signed_v<Sample> ? SAMPLEFORMAT_INT : SAMPLEFORMAT_UINT;
  });
}

std::string describeHyperstack(const ImageGeometry& g) {
  return "ImageJ=1.53t\nimages=" + std::to_string(g.z * g.c * g.t) + "\nchannels=" + std::to_string(g.c) +
         "\nslices=" + std::to_string(g.z) + "\nframes=" + std::to_string(g.t) +
         "\nhyperstack=true\nmode=grayscale\nloop=false\n";
}

void setFields(TIFF* tiff, const Image& image) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(image.getSizeX()));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(image.getSizeY()));
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, static_cast<int>(8 * getSampleSize(image.getBufferType())));
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, getSampleFormat(image.getBufferType()));
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(getRowsPerStrip(image)));
}

/// `buffer` holds a strip of rows that do not lie one after the other.
bool writePage(TIFF* tiff, const Image& image, std::size_t z, std::size_t c, std::size_t t,
               unsigned char* buffer) {
  const std::size_t rowBytes = getRowBytes(image);
  const std::size_t stripRows = getRowsPerStrip(image);
  for (std::size_t y = 0; y < image.getSizeY(); y += stripRows) {
    const std::size_t rows = std::min(stripRows, image.getSizeY() - y);
    // libtiff only reads what it is to write: it would swap bytes for a foreign byte order, not for the
    // native one.
    void* data = const_cast<void*>(image.getRow(y, z, c, t));
    if (buffer) {
      for (std::size_t i = 0; i < rows; ++i)
        std::memcpy(buffer + i * rowBytes, image.getRow(y + i, z, c, t), rowBytes);
      data = buffer;
    }
    const auto strip = static_cast<std::uint32_t>(y / stripRows);
    if (TIFFWriteEncodedStrip(tiff, strip, data, static_cast<tmsize_t>(rows * rowBytes)) < 0) return false;
  }
  return TIFFWriteDirectory(tiff) == 1;
}

}  // namespace

BoolResult canWriteTiff(const ImageGeometry& g, eImageBufferType) {
  constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max();
  if (g.x > most || g.y > most)
    return BoolResult::failure("an image of " + toString(g) + " is too large for TIFF: at most " +
                               std::to_string(most) + " columns and rows");
  std::size_t pages;
  if (__builtin_mul_overflow(g.z, g.c, &pages) || __builtin_mul_overflow(pages, g.t, &pages) ||
      pages > mostPages)
    return BoolResult::failure("an image of " + toString(g) + " is too large for TIFF: at most " +
                               std::to_string(mostPages) + " planes");
  return true;
}

void writeTiff(File& file, const Image& image) {
  const ImageGeometry& g = image.getGeometry();
  const bool dense = image.getStrides().y == static_cast<std::ptrdiff_t>(getRowBytes(image));
  boost::shared_ptr<void> buffer;
  if (!dense)
    buffer = allocateFor(file, [&] { return allocateBlock(getRowsPerStrip(image) * getRowBytes(image)); });

  TiffHandle tiff(file, needsBigTiff(image) ? "w8" : "w");
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t z = 0; z < g.z; ++z)
      for (std::size_t c = 0; c < g.c; ++c) {
        setFields(tiff.get(), image);
        if (t + z + c == 0 && g.z * g.c * g.t > 1)
          TIFFSetField(tiff.get(), TIFFTAG_IMAGEDESCRIPTION, describeHyperstack(g).c_str());
        tiff.check(writePage(tiff.get(), image, z, c, t, static_cast<unsigned char*>(buffer.get())));
      }
  tiff.close();
  tiff.check(true);
}

}  // namespace vexo::image::io
