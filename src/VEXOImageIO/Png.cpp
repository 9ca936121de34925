#include <png.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "VEXOCore/Buffer.h"
#include "VEXOImageIO/Calibration.h"
#include "VEXOImageIO/Format.h"

namespace vexo::image::io {
namespace {

constexpr std::size_t longestSide = 0x7fffffff;
/// Bytes that one byte of the compressed stream can stand for, at most.
constexpr std::size_t largestExpansion = 1040;

/// libpng on an open file. It reports an error by a jump to the last attempt().
class PngHandle {
public:
  PngHandle(File& file, bool writing);
  PngHandle(const PngHandle&) = delete;
  PngHandle& operator=(const PngHandle&) = delete;
  ~PngHandle() { destroy(); }

  png_structp png() const { return _png; }
  png_infop info() const { return _info; }

  /// Throws when libpng reports an error within `step`, which must not own anything: it is left by a jump.
  template <class Step>
  void attempt(const Step& step) {
    if (!isCompleted(step)) raiseFileError(VEXO_HERE, _file, _file.hasFailed() ? _file.getFailure() : _error);
  }

private:
  void destroy() {
    if (_writing)
      png_destroy_write_struct(&_png, &_info);
    else
      png_destroy_read_struct(&_png, &_info, nullptr);
  }
  template <class Step>
  bool isCompleted(const Step& step) noexcept {
    if (setjmp(png_jmpbuf(_png))) return false;
    step();
    return true;
  }
  static void onError(png_structp png, png_const_charp text) {
    char* error = static_cast<PngHandle*>(png_get_error_ptr(png))->_error;
    snprintf(error, sizeof(_error), "%s", text);
    png_longjmp(png, 1);
  }
  static void onWarning(png_structp, png_const_charp) {}
  static void readBytes(png_structp png, png_bytep to, std::size_t size) {
    if (static_cast<File*>(png_get_io_ptr(png))->read(to, size) != size) png_error(png, "read error");
  }
  static void writeBytes(png_structp png, png_bytep from, std::size_t size) {
    if (!static_cast<File*>(png_get_io_ptr(png))->write(from, size)) png_error(png, "write error");
  }
  static void flush(png_structp) {}

  File& _file;
  const bool _writing;
  png_structp _png;
  png_infop _info;
  char _error[256] = "the PNG file is damaged";
};

PngHandle::PngHandle(File& file, bool writing)
    : _file(file),
      _writing(writing),
      _png(writing ? png_create_write_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning)
                   : png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning)),
      _info(_png ? png_create_info_struct(_png) : nullptr) {
  if (!_info) {
    destroy();
    raiseFileError(VEXO_HERE, file, "libpng cannot be started");
  }
  if (writing)
    png_set_write_fn(_png, &file, writeBytes, flush);
  else
    png_set_read_fn(_png, &file, readBytes);
  png_set_user_limits(_png, longestSide, longestSide);
}

/// What the rows that libpng delivers look like.
struct PngLayout {
  std::size_t width = 0, height = 0, channels = 0, bits = 0, rowBytes = 0, storedRowBytes = 0;
  int passes = 1;
  std::uint32_t pixelsPerMetreX = 0, pixelsPerMetreY = 0;
  bool isAnimated = false;
};

png_const_bytep nameOf(const char* chunk) {
  return reinterpret_cast<png_const_bytep>(chunk);
}

/// Throws, before libpng asks for memory, when the file cannot hold what its header states.
PngLayout readLayout(const File& file, PngHandle& handle) {
  PngLayout layout;
  handle.attempt([&handle, &layout] {
    png_structp png = handle.png();
    png_infop info = handle.info();
    // Notes unfold to any size: none of the optional chunks that libpng would keep is read, but for these.
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_AS_DEFAULT, nameOf("pHYs"), 1);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, nameOf("acTL"), 1);
    png_read_info(png, info);
    png_unknown_chunkp kept = nullptr;
    layout.isAnimated = png_get_unknown_chunks(png, info, &kept) > 0;
    layout.width = png_get_image_width(png, info);
    layout.height = png_get_image_height(png, info);
    layout.storedRowBytes = png_get_rowbytes(png, info);
    layout.pixelsPerMetreX = png_get_x_pixels_per_meter(png, info);
    layout.pixelsPerMetreY = png_get_y_pixels_per_meter(png, info);
  });
  if (layout.isAnimated)
    raiseFileError(VEXO_HERE, file, "animated PNG is not supported: save each frame as a file of its own");
  if (layout.storedRowBytes > std::numeric_limits<std::size_t>::max() / layout.height ||
      layout.height * layout.storedRowBytes / largestExpansion > file.getSize())
    raiseFileError(VEXO_HERE, file, "its ", file.getSize(), " bytes cannot hold an image of ", layout.width,
                   " x ", layout.height);
  handle.attempt([&handle, &layout] {
    png_structp png = handle.png();
    png_infop info = handle.info();
    png_set_expand(png);
    if (png_get_bit_depth(png, info) == 16) png_set_swap(png);  // samples are stored with the high byte first
    layout.passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    layout.channels = png_get_channels(png, info);
    layout.bits = png_get_bit_depth(png, info);
    layout.rowBytes = png_get_rowbytes(png, info);
  });
  return layout;
}

/// Sizes that programs state for a screen, 72 and 96 dpi, say nothing about the image.
bool isOfScreen(std::uint32_t pixelsPerMetre) {
  return pixelsPerMetre == 2834 || pixelsPerMetre == 2835 || pixelsPerMetre == 3779 || pixelsPerMetre == 3780;
}

Calibration toCalibration(const PngLayout& layout) {
  const std::uint32_t across = layout.pixelsPerMetreX, down = layout.pixelsPerMetreY;
  Calibration calibration;
  if (across == 0 || down == 0 || (across == down && isOfScreen(across))) return calibration;
  calibration.pixelWidth = toPixelSize(static_cast<float>(across * 1e-6));
  calibration.pixelHeight = toPixelSize(static_cast<float>(down * 1e-6));
  calibration.unit = "\u00B5m";
  return calibration;
}

/// 0 when the format cannot hold the number.
png_uint_32 toPixelsPerMetre(double pixelSize, const std::string& unit) {
  const double pixels = 1 / (pixelSize * getMetres(unit));
  return isKnown(pixels) && pixels >= 1000 && pixels < 0x7fffffff
             ? static_cast<png_uint_32>(std::lround(pixels))
             : 0;
}

ImageInfo toInfo(const File& file, const PngLayout& layout) {
  ImageInfo info;
  info.geometry.x = layout.width;
  info.geometry.y = layout.height;
  info.geometry.c = layout.channels;
  info.type = layout.bits == 16 ? eImageBufferType::UInt16 : eImageBufferType::UInt8;
  info.calibration = toCalibration(layout);
  checkImageBytes(file, info.geometry, info.type);
  // The rows are kept besides the image until they are whole.
  if (layout.passes > 1)
    checkBytes(file, 2 * layout.height * layout.rowBytes,
               "an interlaced image of " + toString(info.geometry));
  return info;
}

/// Reads all rows. The passes of an interlaced file each fill in a part of every row.
void readRows(PngHandle& handle, const PngLayout& layout, unsigned char* rows, Image& image) {
  handle.attempt([&] {
    for (int pass = 1; pass <= layout.passes; ++pass)
      for (std::size_t y = 0; y < layout.height; ++y) {
        unsigned char* row = layout.passes > 1 ? rows + y * layout.rowBytes : rows;
        png_read_row(handle.png(), row, nullptr);
        if (pass == layout.passes) storePixels(row, layout.width, layout.channels, image, 0, y, 0, 0, 0);
      }
    png_read_end(handle.png(), nullptr);
  });
}

}  // namespace

ImageInfo readPngInfo(File& file) {
  PngHandle handle(file, false);
  return toInfo(file, readLayout(file, handle));
}

boost::shared_ptr<Image> readPng(File& file, ImageInfo& info) {
  PngHandle handle(file, false);
  const PngLayout layout = readLayout(file, handle);
  info = toInfo(file, layout);
  const auto image = allocateFor(file, [&] { return Image::create(info.geometry, info.type); });
  const std::size_t keptRows = layout.passes > 1 ? layout.height : 1;
  const auto rows = allocateFor(file, [&] { return allocateBlock(keptRows * layout.rowBytes); });
  readRows(handle, layout, static_cast<unsigned char*>(rows.get()), *image);
  return image;
}

BoolResult canWritePng(const ImageGeometry& g, eImageBufferType type) {
  if (type != eImageBufferType::UInt8 && type != eImageBufferType::UInt16)
    return BoolResult::failure(std::string("PNG cannot hold samples of ") + toString(type) +
                               ", only of uint8 and uint16");
  if (g.z != 1 || g.t != 1 || g.c > 4)
    return BoolResult::failure("PNG cannot hold an image of " + toString(g) +
                               ", only one slice of 1 to 4 planes (c)");
  if (g.x > longestSide || g.y > longestSide)
    return BoolResult::failure("PNG cannot hold an image of " + toString(g) + ", at most " +
                               std::to_string(longestSide) + " columns and rows");
  return true;
}

void writePng(File& file, const Image& image, const Calibration& calibration) {
  constexpr int colourTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                 PNG_COLOR_TYPE_RGB_ALPHA};
  const std::size_t sampleSize = getSampleSize(image.getBufferType());
  const int colourType = colourTypes[image.getSizeC() - 1];
  const auto block =
      allocateFor(file, [&] { return allocateBlock(image.getSizeX() * image.getSizeC() * sampleSize); });
  auto* row = static_cast<unsigned char*>(block.get());
  const png_uint_32 across = toPixelsPerMetre(calibration.pixelWidth, calibration.unit),
                    down = toPixelsPerMetre(calibration.pixelHeight, calibration.unit);
  PngHandle handle(file, true);
  handle.attempt([&handle, &image, sampleSize, colourType, row, across, down] {
    png_structp png = handle.png();
    // Compressing harder costs several times the time and saves little on images with noise.
    png_set_compression_level(png, 3);
    png_set_compression_buffer_size(png, 1 << 18);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_IHDR(png, handle.info(), static_cast<png_uint_32>(image.getSizeX()),
                 static_cast<png_uint_32>(image.getSizeY()), static_cast<int>(8 * sampleSize), colourType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    if (across && down) png_set_pHYs(png, handle.info(), across, down, PNG_RESOLUTION_METER);
    png_write_info(png, handle.info());
    if (sampleSize == 2) png_set_swap(png);
    for (std::size_t y = 0; y < image.getSizeY(); ++y) {
      loadPixels(image, y, row);
      png_write_row(png, row);
    }
    png_write_end(png, nullptr);
  });
}

}  // namespace vexo::image::io
