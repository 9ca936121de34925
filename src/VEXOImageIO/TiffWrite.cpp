#include <tiff.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "VEXOImageIO/Calibration.h"
#include "VEXOImageIO/Format.h"

namespace vexo::image::io {
namespace {

using Bytes = std::vector<unsigned char>;

/// libtiff walks no further than this.
constexpr std::size_t mostPages = std::size_t(1) << 20;
constexpr std::uint64_t mostClassic = std::numeric_limits<std::uint32_t>::max();

template <class T>
void append(Bytes& bytes, T value) {
  const auto* first = reinterpret_cast<const unsigned char*>(&value);
  bytes.insert(bytes.end(), first, first + sizeof(T));
}

/// The bytes in the order of this machine, which the header names.
class DirectoryMaker {
public:
  DirectoryMaker(bool isBig, std::uint64_t position) : _isBig(isBig), _position(position) {}

  // In the order of their tags.
  void addShort(std::uint16_t tag, int value) {
    Bytes bytes;
    append(bytes, static_cast<std::uint16_t>(value));
    _fields.push_back({tag, TIFF_SHORT, 1, bytes});
  }
  void addLong(std::uint16_t tag, std::uint64_t value) {
    Bytes bytes;
    appendOffset(bytes, value);
    _fields.push_back({tag, static_cast<std::uint16_t>(_isBig ? TIFF_LONG8 : TIFF_LONG), 1, bytes});
  }
  void addText(std::uint16_t tag, const std::string& text) {
    const Bytes bytes(text.c_str(), text.c_str() + text.size() + 1);
    _fields.push_back({tag, TIFF_ASCII, bytes.size(), bytes});
  }
  void addFraction(std::uint16_t tag, const std::pair<std::uint32_t, std::uint32_t>& value) {
    Bytes bytes;
    append(bytes, value.first);
    append(bytes, value.second);
    _fields.push_back({tag, TIFF_RATIONAL, 1, bytes});
  }

  /// The directory, then the values that are too long for it; an even number of bytes.
  Bytes make(std::uint64_t nextDirectory) const {
    const std::size_t inlineBytes = _isBig ? 8 : 4;
    std::uint64_t valueAt = _position + (_isBig ? 8 + 20 * _fields.size() + 8 : 2 + 12 * _fields.size() + 4);
    Bytes bytes, values;
    if (_isBig)
      append(bytes, std::uint64_t(_fields.size()));
    else
      append(bytes, static_cast<std::uint16_t>(_fields.size()));
    for (const Field& field : _fields) {
      append(bytes, field.tag);
      append(bytes, field.type);
      appendOffset(bytes, field.count);
      Bytes value = field.bytes;
      if (value.size() > inlineBytes) {
        value.clear();
        appendOffset(value, valueAt + values.size());
        values.insert(values.end(), field.bytes.begin(), field.bytes.end());
        values.resize((values.size() + 7) / 8 * 8);
      }
      value.resize(inlineBytes);
      bytes.insert(bytes.end(), value.begin(), value.end());
    }
    appendOffset(bytes, nextDirectory);
    bytes.insert(bytes.end(), values.begin(), values.end());
    return bytes;
  }

private:
  struct Field {
    std::uint16_t tag, type;
    std::uint64_t count;
    Bytes bytes;
  };
  void appendOffset(Bytes& bytes, std::uint64_t value) const {
    if (_isBig)
      append(bytes, value);
    else
      append(bytes, static_cast<std::uint32_t>(value));
  }

  const bool _isBig;
  const std::uint64_t _position;
  std::vector<Field> _fields;
};

/// Small pieces are gathered, large ones go to the file as they are.
class Output {
public:
  explicit Output(File& file) : _file(file) { _gathered.reserve(capacity); }

  void put(const void* data, std::size_t size) {
    if (_gathered.size() + size > capacity) flush();
    if (size >= capacity) return write(data, size);
    const auto* first = static_cast<const unsigned char*>(data);
    _gathered.insert(_gathered.end(), first, first + size);
  }
  void put(const Bytes& bytes) { put(bytes.data(), bytes.size()); }
  void flush() {
    write(_gathered.data(), _gathered.size());
    _gathered.clear();
  }

private:
  static constexpr std::size_t capacity = std::size_t(1) << 18;
  void write(const void* data, std::size_t size) {
    if (!_file.write(data, size)) raiseFileError(VEXO_HERE, _file, _file.getFailure());
  }

  File& _file;
  Bytes _gathered;
};

int getSampleFormat(eImageBufferType type) {
  return visitBufferType(type, [](auto sample) -> int {
    using Sample = decltype(sample);
    if (std::is_floating_point_v<Sample>) return SAMPLEFORMAT_IEEEFP;
    return std::is_signed_v<Sample> ? SAMPLEFORMAT_INT : SAMPLEFORMAT_UINT;
  });
}

/// The header, the first directory, the samples of all planes in one piece, the other directories. So readers
/// that follow the directories find every plane, and those that take the label for a promise of contiguous
/// planes, as the program does that invented it, find them behind the first offset.
class TiffWriter {
public:
  TiffWriter(const Image& image, const Calibration& calibration)
      : _image(image),
        _g(image.getGeometry()),
        _calibration(calibration),
        _rowBytes(_g.x * getSampleSize(image.getBufferType())),
        _planeBytes(std::uint64_t(_rowBytes) * _g.y),
        _planes(std::uint64_t(_g.z) * _g.c * _g.t),
        _label(writeImageJLabel(_g, calibration)) {
    chooseForm();
  }

  void write(File& file) const;

private:
  void chooseForm();
  void setForm(bool isBig, std::uint64_t directories);
  Bytes makeDirectory(std::uint64_t plane) const;
  std::uint64_t getDirectoryPosition(std::uint64_t plane) const {
    return plane == 0 ? _headerBytes : _samplesEnd + (plane - 1) * _directoryBytes;
  }
  Bytes makeHeader() const;
  void putPlane(Output& output, std::size_t z, std::size_t c, std::size_t t) const;

  const Image& _image;
  const ImageGeometry _g;
  const Calibration& _calibration;
  const std::size_t _rowBytes;
  const std::uint64_t _planeBytes, _planes;
  const std::string _label;

  bool _isBig = false;
  std::uint64_t _directories = 1, _headerBytes = 8, _directoryBytes = 0;
  std::uint64_t _samplesAt = 0, _samplesEnd = 0, _end = 0;
};

void TiffWriter::chooseForm() {
  setForm(false, _planes);
  if (_end <= mostClassic) return;
  // Directories would have to lie where offsets of 32 bits do not reach. The program that invented the label
  // reads no other offsets, and writes a single directory then.
  setForm(false, 1);
  if (_planes > 1 && _samplesAt + _planeBytes <= mostClassic) return;
  setForm(true, _planes);
}

void TiffWriter::setForm(bool isBig, std::uint64_t directories) {
  constexpr std::uint64_t alignment = 16;
  _isBig = isBig;
  _directories = directories;
  _headerBytes = isBig ? 16 : 8;
  _directoryBytes = makeDirectory(1).size();
  _samplesAt = (_headerBytes + makeDirectory(0).size() + alignment - 1) / alignment * alignment;
  _samplesEnd = (_samplesAt + _planes * _planeBytes + alignment - 1) / alignment * alignment;
  _end = _samplesEnd + (directories - 1) * _directoryBytes;
}

Bytes TiffWriter::makeDirectory(std::uint64_t plane) const {
  DirectoryMaker directory(_isBig, getDirectoryPosition(plane));
  directory.addLong(TIFFTAG_IMAGEWIDTH, _g.x);
  directory.addLong(TIFFTAG_IMAGELENGTH, _g.y);
  directory.addShort(TIFFTAG_BITSPERSAMPLE, static_cast<int>(8 * getSampleSize(_image.getBufferType())));
  directory.addShort(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  directory.addShort(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  if (plane == 0 && !_label.empty()) directory.addText(TIFFTAG_IMAGEDESCRIPTION, _label);
  directory.addLong(TIFFTAG_STRIPOFFSETS, _samplesAt + plane * _planeBytes);
  directory.addShort(TIFFTAG_SAMPLESPERPIXEL, 1);
  directory.addLong(TIFFTAG_ROWSPERSTRIP, _g.y);
  directory.addLong(TIFFTAG_STRIPBYTECOUNTS, _planeBytes);
  const auto across = toFraction(1 / _calibration.pixelWidth),
             down = toFraction(1 / _calibration.pixelHeight);
  if (across && down) {
    directory.addFraction(TIFFTAG_XRESOLUTION, *across);
    directory.addFraction(TIFFTAG_YRESOLUTION, *down);
    directory.addShort(TIFFTAG_RESOLUTIONUNIT, _calibration.unit == "inch" ? RESUNIT_INCH
                                               : _calibration.unit == "cm" ? RESUNIT_CENTIMETER
                                                                           : RESUNIT_NONE);
  }
  directory.addShort(TIFFTAG_SAMPLEFORMAT, getSampleFormat(_image.getBufferType()));
  return directory.make(plane + 1 < _directories ? getDirectoryPosition(plane + 1) : 0);
}

Bytes TiffWriter::makeHeader() const {
  const std::uint16_t probe = 1;
  const bool isLittle = *reinterpret_cast<const unsigned char*>(&probe) == 1;
  Bytes bytes(2, isLittle ? 'I' : 'M');
  append(bytes, static_cast<std::uint16_t>(_isBig ? 43 : 42));
  if (_isBig) {
    append(bytes, std::uint16_t(8));  // bytes of an offset
    append(bytes, std::uint16_t(0));
    append(bytes, _headerBytes);
  } else {
    append(bytes, static_cast<std::uint32_t>(_headerBytes));
  }
  return bytes;
}

void TiffWriter::putPlane(Output& output, std::size_t z, std::size_t c, std::size_t t) const {
  if (_image.getStrides().y == static_cast<std::ptrdiff_t>(_rowBytes))
    return output.put(_image.getRow(0, z, c, t), static_cast<std::size_t>(_planeBytes));
  for (std::size_t y = 0; y < _g.y; ++y) output.put(_image.getRow(y, z, c, t), _rowBytes);
}

void TiffWriter::write(File& file) const {
  Output output(file);
  output.put(makeHeader());
  const Bytes first = makeDirectory(0);
  output.put(first);
  output.put(Bytes(static_cast<std::size_t>(_samplesAt - _headerBytes - first.size())));
  for (std::size_t t = 0; t < _g.t; ++t)
    for (std::size_t z = 0; z < _g.z; ++z)
      for (std::size_t c = 0; c < _g.c; ++c) putPlane(output, z, c, t);
  if (_directories > 1)
    output.put(Bytes(static_cast<std::size_t>(_samplesEnd - _samplesAt - _planes * _planeBytes)));
  for (std::uint64_t plane = 1; plane < _directories; ++plane) output.put(makeDirectory(plane));
  output.flush();
}

}  // namespace

BoolResult canWriteTiff(const ImageGeometry& g, eImageBufferType type) {
  constexpr std::size_t mostSide = std::numeric_limits<std::uint32_t>::max();
  const auto refuse = [&](const char* why, std::size_t most, const char* of) {
    return BoolResult::failure("an image of " + toString(g) + why + std::to_string(most) + of);
  };
  if (g.x > mostSide || g.y > mostSide)
    return refuse(" is too large for TIFF: at most ", mostSide, " columns and rows");
  std::size_t planes;
  if (__builtin_mul_overflow(g.z, g.c, &planes) || __builtin_mul_overflow(planes, g.t, &planes) ||
      planes > mostPages)
    return refuse(" is too large for TIFF: at most ", mostPages, " planes");
  // Half of what offsets of 64 bits reach, which leaves room for the directories.
  constexpr std::size_t mostBytes = std::numeric_limits<std::int64_t>::max() / 2;
  std::size_t bytes;
  if (__builtin_mul_overflow(g.x * g.y, getSampleSize(type), &bytes) ||
      __builtin_mul_overflow(bytes, planes, &bytes) || bytes > mostBytes)
    return refuse(" is too large for a file: at most ", mostBytes, " bytes");
  return true;
}

void writeTiff(File& file, const Image& image, const Calibration& calibration) {
  TiffWriter(image, calibration).write(file);
}

}  // namespace vexo::image::io
