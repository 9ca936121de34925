#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "VEXOCore/Buffer.h"
#include "VEXOCore/Quote.h"
#include "VEXOImageIO/Format.h"
#include "VEXOImageIO/PlaneOrder.h"
#include "VEXOImageIO/TiffHandle.h"
#include "VEXOImageIO/TiffSamples.h"

namespace vexo::image::io {
namespace {

constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
/// A file of a few bytes may stand for so many all the same: constant tiles cost next to nothing.
constexpr std::uint64_t freeBytes = std::uint64_t(4) << 20;
/// Tiles may be larger than the image, but not by more than this.
constexpr std::uint64_t usualTileBytes = std::uint64_t(64) << 20;

/// How the current page stores its samples: in strips or tiles ("blocks") of `channels` interleaved channels,
/// one series of blocks per plane.
struct Page {
  std::uint32_t width = 0, height = 0, blockWidth = 0, blockHeight = 0;
  std::uint16_t samples = 1, planes = 1, channels = 1, compression = COMPRESSION_NONE;
  bool tiled = false;
  eImageBufferType type = eImageBufferType::UInt8;

  std::uint64_t getBlocksAcross() const { return (std::uint64_t(width) + blockWidth - 1) / blockWidth; }
  std::uint64_t getBlocksDown() const { return (std::uint64_t(height) + blockHeight - 1) / blockHeight; }
  std::uint64_t getPixelBytes() const { return std::uint64_t(channels) * getSampleSize(type); }
  std::uint64_t getRowBytes() const { return blockWidth * getPixelBytes(); }
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

void swapBytes(void* samples, std::size_t bytes, std::size_t sampleSize) {
  if (sampleSize == 2)
    TIFFSwabArrayOfShort(static_cast<std::uint16_t*>(samples), static_cast<tmsize_t>(bytes / 2));
  if (sampleSize == 4)
    TIFFSwabArrayOfLong(static_cast<std::uint32_t*>(samples), static_cast<tmsize_t>(bytes / 4));
}

std::uint64_t multiply(std::uint64_t a, std::uint64_t b) {
  std::uint64_t product;
  return __builtin_mul_overflow(a, b, &product) ? most : product;
}

std::uint64_t add(std::uint64_t a, std::uint64_t b) {
  std::uint64_t sum;
  return __builtin_add_overflow(a, b, &sum) ? most : sum;
}

class TiffReader {
public:
  // No chopping: strips are read as they are stored. The places of the strips are not read before their
  // number is known to be plausible.
  explicit TiffReader(File& file) : _file(file), _tiff(file, "rcO") { scan(); }

  const ImageInfo& getInfo() const { return _info; }
  boost::shared_ptr<Image> read();

private:
  void scan();
  Page readPage();
  void checkSame(const Page& page, std::size_t index) const;
  void checkPlanes();
  void readLayout(Page& page);
  void checkBlocks(const Page& page);
  void checkBlock(const Page& page, const Block& block);
  void checkExpansion() const;
  void readCalibration();
  void dividePages();
  void divideByLabel(ImageJLabel& label);
  /// The number of images that lie one after the other behind the only directory, of those stated.
  std::size_t findFollowing(std::uint64_t stated);
  void loadPage(const Page& page, Image& image, std::size_t index);
  void loadFollowing(Image& image);

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
  const std::uint64_t _fileSize = _file.getSize();
  /// Offsets: finding a page by its number would walk through all before it.
  std::vector<std::uint64_t> _pages;
  std::vector<std::size_t> _directories;  ///< the numbers of the pages among all directories
  std::size_t _directory = 0;             ///< the number of the current one while they are scanned
  PlaneOrder _order;
  std::size_t _following = 1;      ///< images of a file with one directory
  std::uint64_t _firstOffset = 0;  ///< of the first strip
  bool _isDense = true;            ///< the first page is one piece of uncompressed samples
  std::uint64_t _storedBytes = 0;  ///< of all blocks of all pages
  std::uint64_t _loose = 0, _loosePlausible = freeBytes;  ///< bytes of blocks that have no bound of their own
};

void TiffReader::scan() {
  TIFF* tiff = _tiff.get();
  if (const char* text = getField<const char*>(TIFFTAG_IMAGEDESCRIPTION, nullptr)) _description = text;
  readCalibration();
  for (;; ++_directory) {
    _tiff.check(true);
    if ((getField<std::uint32_t>(TIFFTAG_SUBFILETYPE, 0) & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) == 0) {
      const Page page = readPage();
      if (_pages.empty()) _first = page;
      checkSame(page, _directory);
      checkBlocks(page);
      _pages.push_back(TIFFCurrentDirOffset(tiff));
      _directories.push_back(_directory);
      checkImageBytes(_file, {page.width, page.height, _pages.size(), page.samples}, page.type);
    }
    if (TIFFLastDirectory(tiff)) break;
    _tiff.check(TIFFReadDirectory(tiff) == 1);
  }
  _tiff.check(true);
  if (_pages.empty())
    raiseFileError(VEXO_HERE, _file, "it holds nothing but images of reduced resolution and masks");
  checkExpansion();
  dividePages();
  _file.limitReading(File::unlimited);
}

void TiffReader::checkSame(const Page& page, std::size_t index) const {
  if (page.width == _first.width && page.height == _first.height && page.samples == _first.samples &&
      page.type == _first.type)
    return;
  raiseFileError(VEXO_HERE, _file, "page ", index + 1, " (", page.width, " x ", page.height, " x ",
                 page.samples, " of ", toString(page.type), ") differs from the first (", _first.width, " x ",
                 _first.height, " x ", _first.samples, " of ", toString(_first.type),
                 "): save them as files of their own");
}

Page TiffReader::readPage() {
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
  if (const std::string obstacle = findType(bits, format, page.type); !obstacle.empty())
    raiseFileError(VEXO_HERE, _file, obstacle);
  // Behind the label a palette is how the samples are shown, they are intensities all the same.
  const bool isShown = photometric == PHOTOMETRIC_PALETTE && readImageJLabel(_description);
  if (const std::string obstacle =
          findObstacle(isShown ? PHOTOMETRIC_MINISBLACK : photometric, page.compression);
      !obstacle.empty())
    raiseFileError(VEXO_HERE, _file, obstacle);
  for (const std::uint32_t tag : {TIFFTAG_IMAGEDEPTH, TIFFTAG_TILEDEPTH})
    if (const auto depth = getField<std::uint32_t>(tag, 1); depth > 1)
      raiseFileError(VEXO_HERE, _file, tag == TIFFTAG_IMAGEDEPTH ? "ImageDepth " : "TileDepth ", depth,
                     " is not supported: save each slice as a page of its own");
  checkPlanes();
  if (photometric == PHOTOMETRIC_YCBCR) TIFFSetField(_tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  // With its other decoder libtiff reports success, and delivers nothing, for a strip that holds more than is
  // asked for.
  if (page.compression == COMPRESSION_DEFLATE || page.compression == COMPRESSION_ADOBE_DEFLATE)
    TIFFSetField(_tiff.get(), TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
  readLayout(page);
  return page;
}

/// Stacks of some microscopes have a private tag with a value for each plane behind their only directory.
void TiffReader::checkPlanes() {
  constexpr std::uint32_t planesTag = 33629;
  const TIFFField* field = TIFFFindField(_tiff.get(), planesTag, TIFF_ANY);
  std::uint32_t planes = 0;
  const void* values = nullptr;
  if (!field || !TIFFFieldPassCount(field) || TIFFFieldReadCount(field) != TIFF_VARIABLE2) return;
  if (TIFFGetField(_tiff.get(), planesTag, &planes, &values) == 1 && planes > 1)
    raiseFileError(VEXO_HERE, _file, "stacks in the format STK are not supported (", planes,
                   " planes): save a page for each plane");
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
  const std::uint64_t blocks = multiply(multiply(page.getBlocksAcross(), page.getBlocksDown()), page.planes);
  if (blocks > _fileSize - _storedBytes)
    raiseFileError(VEXO_HERE, _file, "its ", _fileSize, " bytes cannot hold the ", blocks,
                   " strips or tiles of page ", _directory + 1);
  _tiff.check(blocks == (page.tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff)));
  if (page.compression == COMPRESSION_WEBP)
    _tiff.check(page.blockWidth <= 16383 && page.blockHeight <= 16383);
  if (_pages.empty())
    _isDense = page.compression == COMPRESSION_NONE && !page.tiled &&
               getField<std::uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) == FILLORDER_MSB2LSB;
  forEachBlock(page, [&](const Block& block) { checkBlock(page, block); });
}

void TiffReader::checkBlock(const Page& page, const Block& block) {
  TIFF* tiff = _tiff.get();
  const auto refuse = [&](const auto&... why) {
    raiseFileError(VEXO_HERE, _file, page.tiled ? "tile " : "strip ", block.index + 1, " of page ",
                   _directory + 1, ' ', why...);
  };
  // Subsampled colour has other block sizes than these.
  const std::uint64_t bytes = page.tiled ? TIFFTileSize64(tiff) : TIFFVStripSize64(tiff, block.rows);
  _tiff.check(bytes != 0 && bytes == multiply(page.getRowBytes(), block.rows));
  int failed = 0;
  const std::uint64_t offset = TIFFGetStrileOffsetWithErr(tiff, block.index, &failed);
  const std::uint64_t count = failed ? 0 : TIFFGetStrileByteCountWithErr(tiff, block.index, &failed);
  if (failed || count == 0) refuse("has no data");
  if (offset < (TIFFIsBigTIFF(tiff) ? 16 : 8)) refuse("lies in the header of the file");
  if (offset > _fileSize || count > _fileSize - offset)
    raiseFileError(VEXO_HERE, _file, "the file ends early");
  if (count > _fileSize - _storedBytes)
    refuse("does not fit: with it the strips and tiles have more bytes than the file, ", _fileSize);
  const TiffCodec codec = getCodec(page.compression);
  if (const std::uint64_t largest = TiffHandle::getLargestWhole(_file); codec.isWhole && bytes > largest)
    refuse("of ", bytes, " bytes cannot come from ", _fileSize, " bytes, at most ", largest,
           " do in this compression: save it with smaller strips or tiles, or with another");
  if (codec.isPerBlock && bytes / codec.largestExpansion > count)
    refuse("of ", bytes, " bytes cannot come from ", count, " bytes");
  // A strip is no larger than the image.
  const std::uint64_t pageBytes = multiply(multiply(page.width, page.height), page.getPixelBytes());
  if (bytes > add(pageBytes, usualTileBytes))
    refuse("takes ", bytes, " bytes, but the image only ", pageBytes, ": save it with smaller tiles");
  if (page.tiled) checkBytes(_file, bytes, "a tile");
  if (!codec.isPerBlock) {
    _loose = add(_loose, bytes);
    _loosePlausible = add(_loosePlausible, multiply(count, codec.largestExpansion));
  }
  if (_pages.empty() && block.index == 0) _firstOffset = offset;
  if (_pages.empty() && (count != bytes || offset != _firstOffset + _storedBytes)) _isDense = false;
  _storedBytes += count;
}

void TiffReader::checkExpansion() const {
  if (_loose > _loosePlausible)
    raiseFileError(VEXO_HERE, _file, _loose, " bytes of strips and tiles cannot come from ", _storedBytes,
                   " bytes");
}

void TiffReader::readCalibration() {
  const auto x = getField<float>(TIFFTAG_XRESOLUTION, 0), y = getField<float>(TIFFTAG_YRESOLUTION, 0);
  const auto unit = getField<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  const bool isInch = unit == RESUNIT_INCH, isCentimetre = unit == RESUNIT_CENTIMETER;
  // What programs write that know nothing of the size.
  const bool isUnknown = isInch ? x == 72 && y == 72 : !isCentimetre && x == 1 && y == 1;
  const auto label = readImageJLabel(_description);
  if ((isUnknown && !(label && !label->calibration.unit.empty())) || !isKnown(static_cast<double>(x)) ||
      !isKnown(static_cast<double>(y)))
    return;
  Calibration& calibration = _info.calibration;
  calibration.pixelWidth = toPixelSize(x);
  calibration.pixelHeight = toPixelSize(y);
  calibration.unit = isInch ? "inch" : isCentimetre ? "cm" : "";
}

void TiffReader::dividePages() {
  ImageGeometry& g = _info.geometry;
  _info.type = _first.type;
  g.x = _first.width;
  g.y = _first.height;
  _order.z = _pages.size();
  // So a file says that its one page stands for all.
  if (_description.rfind('{', 0) == 0 && _description.find("\"truncated\": true") != std::string::npos)
    raiseFileError(VEXO_HERE, _file,
                   "it states one page for all planes ('truncated'): save a page for each of them");
  if (auto label = readImageJLabel(_description))
    divideByLabel(*label);
  else if (isOmeXml(_description))
    _order = readOmeXml(_file, _description, {g.x, g.y, _first.samples, _directories}, _info.calibration);
  g.z = _order.z;
  g.c = _order.c * _first.samples;
  g.t = _order.t;
  checkImageBytes(_file, g, _info.type);
}

void TiffReader::divideByLabel(ImageJLabel& label) {
  Calibration& calibration = label.calibration;
  calibration.pixelWidth = _info.calibration.pixelWidth;
  calibration.pixelHeight = convertSize(_info.calibration.pixelHeight, label.heightUnit, calibration.unit);
  if (!isKnown(calibration.pixelHeight)) calibration.pixelWidth = 0;
  if (calibration.unit.empty()) calibration.unit = _info.calibration.unit;
  _info.calibration = calibration;

  std::uint64_t c = std::max<std::uint64_t>(1, label.channels);
  const std::uint64_t z = std::max<std::uint64_t>(1, label.slices),
                      t = std::max<std::uint64_t>(1, label.frames);
  // The channels may be the samples of a pixel.
  const std::uint64_t images = std::max<std::uint64_t>(label.images, _pages.size());
  if (c == _first.samples && multiply(z, t) == images) c = 1;
  const std::uint64_t product = multiply(multiply(c, z), t), stated = std::max(product, label.images);
  std::size_t found = _pages.size();
  if (found == 1 && stated > 1) found = _following = findFollowing(stated);
  if (stated > found)
    raiseFileError(VEXO_HERE, _file, "its metadata state ", stated, " pages, but it has only ", found);
  _order.z = found;
  if (product != found) return;
  std::string letters = label.order;
  std::sort(letters.begin(), letters.end());
  if (label.order.rfind("xy", 0) != 0 || letters != "ctxyz")
    raiseFileError(VEXO_HERE, _file, "its metadata state the order ", quote(label.order),
                   ", which is no order of planes");
  _order = {z, c, t, label.order.substr(2), {}};
}

std::size_t TiffReader::findFollowing(std::uint64_t stated) {
  if (!_isDense || _directories.back() != 0) return 1;
  const std::uint64_t room = (_fileSize - _firstOffset) / _storedBytes;
  return static_cast<std::size_t>(std::min(stated, room));
}

boost::shared_ptr<Image> TiffReader::read() {
  const auto image = allocateFor(_file, [&] { return Image::create(_info.geometry, _info.type); });
  if (_following > 1) {
    loadFollowing(*image);
    return image;
  }
  for (std::size_t i = 0; i < _pages.size(); ++i) {
    if (_directory > 0) _tiff.check(TIFFSetSubDirectory(_tiff.get(), _pages[i]) == 1);
    _tiff.check(true);
    const Page page = readPage();
    checkSame(page, _directories[i]);  // someone may be overwriting the file
    loadPage(page, *image, i);
  }
  _tiff.check(true);
  return image;
}

void TiffReader::loadPage(const Page& page, Image& image, std::size_t index) {
  TIFF* tiff = _tiff.get();
  const PlaneOrder::Place place = _order.find(index);
  const std::size_t rowBytes = page.getRowBytes();
  const bool direct = !page.tiled && page.channels == 1;
  boost::shared_ptr<void> buffer;
  if (!direct) buffer = allocateFor(_file, [&] { return allocateBlock(rowBytes * page.blockHeight); });

  // The decoder of JPEG only warns of damaged data. That and some others leave out samples then.
  _tiff.setStrict(page.compression == COMPRESSION_JPEG);
  const bool mayLeaveOut = getCodec(page.compression).mayLeaveOut;
  forEachBlock(page, [&](const Block& block) {
    const std::size_t c = place.c * page.samples + block.plane;
    void* to = direct ? image.getRow(block.y, place.z, c, place.t) : buffer.get();
    const auto bytes = static_cast<tmsize_t>(rowBytes * block.rows);
    if (mayLeaveOut) std::memset(to, 0, rowBytes * block.rows);
    _tiff.check((page.tiled ? TIFFReadEncodedTile(tiff, block.index, to, bytes)
                            : TIFFReadEncodedStrip(tiff, block.index, to, bytes)) == bytes);
    if (direct) return;
    const std::size_t rows = std::min(block.rows, page.height - block.y);
    const std::size_t columns = std::min(page.blockWidth, page.width - block.x);
    for (std::size_t i = 0; i < rows; ++i)
      storePixels(static_cast<const unsigned char*>(to) + i * rowBytes, columns, page.channels, image,
                  block.x, block.y + i, place.z, c, place.t);
  });
  _tiff.setStrict(false);
}

void TiffReader::loadFollowing(Image& image) {
  const std::size_t rowBytes = _first.getRowBytes(), planeBytes = rowBytes * _first.height;
  const bool direct = _first.channels == 1, isSwapped = TIFFIsByteSwapped(_tiff.get()) != 0;
  boost::shared_ptr<void> buffer;
  if (!direct) buffer = allocateFor(_file, [&] { return allocateBlock(planeBytes); });
  _tiff.check(_file.seek(static_cast<std::int64_t>(_firstOffset), SEEK_SET) >= 0);
  for (std::size_t i = 0; i < _following; ++i)
    for (std::size_t plane = 0; plane < _first.planes; ++plane) {
      const PlaneOrder::Place place = _order.find(i);
      const std::size_t c = place.c * _first.samples + plane;
      auto* to = static_cast<unsigned char*>(direct ? image.getRow(0, place.z, c, place.t) : buffer.get());
      _tiff.check(_file.read(to, planeBytes) == planeBytes);
      if (isSwapped) swapBytes(to, planeBytes, getSampleSize(_first.type));
      for (std::size_t y = 0; !direct && y < _first.height; ++y)
        storePixels(to + y * rowBytes, _first.width, _first.channels, image, 0, y, place.z, c, place.t);
    }
}

}  // namespace

ImageInfo readTiffInfo(File& file) {
  return TiffReader(file).getInfo();
}

boost::shared_ptr<Image> readTiff(File& file, ImageInfo& info) {
  TiffReader reader(file);
  info = reader.getInfo();
  return reader.read();
}

}  // namespace vexo::image::io
