#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <vector>

#include "VEXOCore/Buffer.h"
#include "VEXOImageIO/Format.h"
#include "VEXOImageIO/TiffHandle.h"

namespace vexo::image::io {
namespace {

/// How the current page stores its samples: in strips or tiles ("blocks") of `channels` interleaved channels,
/// one series of blocks per plane.
struct Page {
  std::uint32_t width = 0, height = 0, blockWidth = 0, blockHeight = 0;
  std::uint16_t samples = 1, planes = 1, channels = 1, compression = COMPRESSION_NONE;
  bool tiled = false;
  eImageBufferType type = eImageBufferType::UInt8;

  std::uint64_t getBlocksAcross() const { return (std::uint64_t(width) + blockWidth - 1) / blockWidth; }
  std::uint64_t getBlocksDown() const { return (std::uint64_t(height) + blockHeight - 1) / blockHeight; }
};

struct Block {
  std::uint32_t index, x, y, rows;
  std::uint16_t plane;
};

template <class Function>
void forEachBlock(const Page& page, const Function& function) {
  Block block{};
  for (block.plane = 0; block.plane < page.planes; ++block.plane)
    for (std::uint64_t y = 0; y < page.height; y += page.blockHeight)
      for (std::uint64_t x = 0; x < page.width; x += page.blockWidth, ++block.index) {
        block.x = static_cast<std::uint32_t>(x);
        block.y = static_cast<std::uint32_t>(y);
        block.rows = page.tiled ? page.blockHeight : std::min(page.blockHeight, page.height - block.y);
        function(block);
      }
}

/// Bytes that one stored byte can stand for, at most; 0 when there is no useful bound.
std::uint64_t getLargestExpansion(std::uint16_t compression) {
  switch (compression) {
    case COMPRESSION_NONE:
      return 1;
    case COMPRESSION_PACKBITS:
      return 64;
    case COMPRESSION_LZW:
      return 4096;
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
      return 1040;
    default:
      return 0;
  }
}

/// False when there is no image type for such samples.
bool findType(std::uint16_t bits, std::uint16_t format, eImageBufferType& type) {
  const bool isSigned = format == SAMPLEFORMAT_INT;
  if (format == SAMPLEFORMAT_IEEEFP && bits == 32)
    type = eImageBufferType::Real32;
  else if (!isSigned && format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID)
    return false;
  else if (bits == 8)
    type = isSigned ? eImageBufferType::Int8 : eImageBufferType::UInt8;
  else if (bits == 16)
    type = isSigned ? eImageBufferType::Int16 : eImageBufferType::UInt16;
  else if (bits == 32)
    type = isSigned ? eImageBufferType::Int32 : eImageBufferType::UInt32;
  else
    return false;
  return true;
}

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

/// Why samples of this photometric interpretation cannot be taken as they are stored; null when they can.
const char* findObstacle(std::uint16_t photometric, std::uint16_t compression) {
  switch (photometric) {
    case PHOTOMETRIC_PALETTE:
      // Indices of a colour map are no intensities, and whether the map is mere decoration only the user
      // knows.
      return "palette colour is not supported";
    case PHOTOMETRIC_YCBCR:
      return compression == COMPRESSION_JPEG ? nullptr : "YCbCr colour is supported in JPEG compression only";
    case PHOTOMETRIC_CFA:
      return "colour filter arrays are not supported";
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
      return "logarithmic samples are not supported";
    default:
      return nullptr;
  }
}

/// The number of a line "key=number"; 0 when there is none, the largest number when it is larger than that.
std::uint64_t readNumber(const std::string& text, const std::string& key) {
  const std::size_t at = text.find("\n" + key + "=");
  if (at == std::string::npos) return 0;
  const char* first = text.data() + at + key.size() + 2;
  std::uint64_t number = 0;
  const auto result = std::from_chars(first, text.data() + text.size(), number);
  return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max() : number;
}

class TiffReader {
public:
  explicit TiffReader(File& file) : _file(file), _tiff(file, "r") { scan(); }

  const ImageInfo& getInfo() const { return _info; }
  boost::shared_ptr<Image> read();

private:
  void scan();
  Page readPage();
  void checkSame(const Page& page, std::size_t index) const;
  void readLayout(Page& page);
  void checkBlocks(const Page& page);
  void dividePages();
  void loadPage(const Page& page, Image& image, std::size_t index);

  template <class T>
  T getField(std::uint32_t tag, T otherwise) {
    T value = otherwise;
    return TIFFGetFieldDefaulted(_tiff.get(), tag, &value) == 1 ? value : otherwise;
  }

  File& _file;
  TiffHandle _tiff;
  ImageInfo _info;
  Page _first;
  std::string _description;
  std::vector<std::uint64_t>
      _pages;  ///< offsets: finding a page by its number would walk through all before it
};

void TiffReader::scan() {
  TIFF* tiff = _tiff.get();
  if (const char* text = getField<const char*>(TIFFTAG_IMAGEDESCRIPTION, nullptr)) _description = text;
  for (;;) {
    const Page page = readPage();
    if (_pages.empty()) _first = page;
    checkSame(page, _pages.size());
    checkBlocks(page);
    _pages.push_back(TIFFCurrentDirOffset(tiff));
    if (TIFFLastDirectory(tiff)) break;
    _tiff.check(TIFFReadDirectory(tiff) == 1);
  }
  _tiff.check(true);
  dividePages();
}

void TiffReader::checkSame(const Page& page, std::size_t index) const {
  if (page.width == _first.width && page.height == _first.height && page.samples == _first.samples &&
      page.type == _first.type)
    return;
  raiseFileError(VEXO_HERE, _file, "page ", index + 1, " (", page.width, " x ", page.height, " x ",
                 page.samples, " of ", toString(page.type), ") differs from the first (", _first.width, " x ",
                 _first.height, " x ", _first.samples, " of ", toString(_first.type), ")");
}

Page TiffReader::readPage() {
  _tiff.check(true);
  Page page;
  page.width = getField(TIFFTAG_IMAGEWIDTH, page.width);
  page.height = getField(TIFFTAG_IMAGELENGTH, page.height);
  page.samples = getField(TIFFTAG_SAMPLESPERPIXEL, page.samples);
  page.compression = getField(TIFFTAG_COMPRESSION, page.compression);
  const auto bits = getField<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
  const auto format = getField<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  const auto photometric = getField<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  if (page.width == 0 || page.height == 0 || page.samples == 0)
    raiseFileError(VEXO_HERE, _file, "the TIFF file states no image size");
  if (!findType(bits, format, page.type))
    raiseFileError(VEXO_HERE, _file, bits, "-bit ", describeFormat(format), " samples are not supported");
  if (const char* obstacle = findObstacle(photometric, page.compression))
    raiseFileError(VEXO_HERE, _file, obstacle);
  if (photometric == PHOTOMETRIC_YCBCR) TIFFSetField(_tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  // With its other decoder libtiff reports success, and delivers nothing, for a strip that holds more than is
  // asked for.
  if (page.compression == COMPRESSION_DEFLATE || page.compression == COMPRESSION_ADOBE_DEFLATE)
    TIFFSetField(_tiff.get(), TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
  readLayout(page);
  return page;
}

void TiffReader::readLayout(Page& page) {
  const auto planar = getField<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  (planar == PLANARCONFIG_SEPARATE ? page.planes : page.channels) = page.samples;
  page.tiled = TIFFIsTiled(_tiff.get()) != 0;
  if (page.tiled) {
    page.blockWidth = getField(TIFFTAG_TILEWIDTH, page.blockWidth);
    page.blockHeight = getField(TIFFTAG_TILELENGTH, page.blockHeight);
  } else {
    page.blockWidth = page.width;
    page.blockHeight = std::min(getField(TIFFTAG_ROWSPERSTRIP, page.height), page.height);
  }
  if (page.blockWidth == 0 || page.blockHeight == 0)
    raiseFileError(VEXO_HERE, _file, "the TIFF file states no strip or tile size");
}

/// Holds the sizes that the header states against the bytes that are there, before memory is asked for.
void TiffReader::checkBlocks(const Page& page) {
  TIFF* tiff = _tiff.get();
  const std::uint64_t fileSize = _file.getSize();
  const std::uint64_t expansion = getLargestExpansion(page.compression);
  const std::uint64_t rowBytes = std::uint64_t(page.blockWidth) * page.channels * getSampleSize(page.type);
  const std::uint64_t stated = page.tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  std::uint64_t blocks;
  const bool overflow = __builtin_mul_overflow(page.getBlocksAcross(), page.getBlocksDown(), &blocks) ||
                        __builtin_mul_overflow(blocks, page.planes, &blocks);
  _tiff.check(!overflow && blocks == stated);
  forEachBlock(page, [&](const Block& block) {
    // Volumes and subsampled colour have other block sizes than these.
    const std::uint64_t bytes = page.tiled ? TIFFTileSize64(tiff) : TIFFVStripSize64(tiff, block.rows);
    _tiff.check(bytes != 0 && bytes == rowBytes * block.rows);
    int failed = 0;
    const std::uint64_t offset = TIFFGetStrileOffsetWithErr(tiff, block.index, &failed);
    const std::uint64_t count = failed ? 0 : TIFFGetStrileByteCountWithErr(tiff, block.index, &failed);
    if (failed || count == 0)
      raiseFileError(VEXO_HERE, _file, "a strip or tile of page ", _pages.size() + 1, " has no data");
    if (offset > fileSize || count > fileSize - offset)
      raiseFileError(VEXO_HERE, _file, "the file ends early");
    if (expansion != 0 && bytes / expansion > count)
      raiseFileError(VEXO_HERE, _file, "a strip or tile of ", bytes, " bytes cannot come from ", count,
                     " bytes");
  });
}

void TiffReader::dividePages() {
  ImageGeometry& g = _info.geometry;
  const std::size_t pages = _pages.size();
  _info.type = _first.type;
  g.x = _first.width;
  g.y = _first.height;
  g.z = pages;
  g.c = _first.samples;
  if (_description.rfind("ImageJ=", 0) != 0) return;
  const std::uint64_t c = std::max<std::uint64_t>(1, readNumber(_description, "channels"));
  const std::uint64_t z = std::max<std::uint64_t>(1, readNumber(_description, "slices"));
  const std::uint64_t t = std::max<std::uint64_t>(1, readNumber(_description, "frames"));
  std::uint64_t product;
  if (__builtin_mul_overflow(c, z, &product) || __builtin_mul_overflow(product, t, &product))
    product = std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t stated = std::max(product, readNumber(_description, "images"));
  if (stated > pages)
    raiseFileError(VEXO_HERE, _file, "its metadata state ", stated, " pages, but it has only ", pages);
  if (product != pages) return;
  if (c > 1 && _first.samples > 1)
    raiseFileError(VEXO_HERE, _file, "pages of ", _first.samples,
                   " samples per pixel cannot be divided into ", c, " channels");
  g.z = z;
  g.c *= c;
  g.t = t;
}

boost::shared_ptr<Image> TiffReader::read() {
  const auto image = allocateFor(_file, [&] { return Image::create(_info.geometry, _info.type); });
  for (std::size_t i = 0; i < _pages.size(); ++i) {
    if (_pages.size() > 1) _tiff.check(TIFFSetSubDirectory(_tiff.get(), _pages[i]) == 1);
    const Page page = readPage();
    checkSame(page, i);  // someone may be overwriting the file
    loadPage(page, *image, i);
  }
  _tiff.check(true);
  return image;
}

void TiffReader::loadPage(const Page& page, Image& image, std::size_t index) {
  TIFF* tiff = _tiff.get();
  // In a file each slice has all its channels one after the other, unless they are samples of a pixel.
  const ImageGeometry& g = image.getGeometry();
  const std::size_t channelPages = g.c / page.samples;
  const std::size_t pageC = index % channelPages, z = index / channelPages % g.z,
                    t = index / channelPages / g.z;

  const std::size_t rowBytes = std::size_t(page.blockWidth) * page.channels * getSampleSize(page.type);
  const bool direct = !page.tiled && page.channels == 1;
  boost::shared_ptr<void> buffer;
  if (!direct) buffer = allocateFor(_file, [&] { return allocateBlock(rowBytes * page.blockHeight); });

  // The decoder of JPEG only warns of damaged data. That and some others leave out samples then.
  _tiff.setStrict(page.compression == COMPRESSION_JPEG);
  const bool mayLeaveOut = getLargestExpansion(page.compression) == 0;
  forEachBlock(page, [&](const Block& block) {
    const std::size_t c = pageC + block.plane;
    void* to = direct ? image.getRow(block.y, z, c, t) : buffer.get();
    const auto bytes = static_cast<tmsize_t>(rowBytes * block.rows);
    if (mayLeaveOut) std::memset(to, 0, rowBytes * block.rows);
    _tiff.check((page.tiled ? TIFFReadEncodedTile(tiff, block.index, to, bytes)
                            : TIFFReadEncodedStrip(tiff, block.index, to, bytes)) == bytes);
    if (direct) return;
    const std::size_t rows = std::min(block.rows, page.height - block.y);
    const std::size_t columns = std::min(page.blockWidth, page.width - block.x);
    for (std::size_t i = 0; i < rows; ++i)
      storePixels(static_cast<const unsigned char*>(to) + i * rowBytes, columns, page.channels, image,
                  block.x, block.y + i, z, c, t);
  });
  _tiff.setStrict(false);
}

}  // namespace

ImageInfo readTiffInfo(File& file) {
  return TiffReader(file).getInfo();
}

boost::shared_ptr<Image> readTiff(File& file) {
  return TiffReader(file).read();
}

}  // namespace vexo::image::io
