#include "VEXOImageIO/ImageIO.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>

#include "VEXOImageIO/Format.h"
#include "VEXOImageIO/Target.h"

namespace vexo::image::io {
namespace {

struct Format {
  ImageInfo (*readInfo)(File&);
  boost::shared_ptr<Image> (*read)(File&, ImageInfo&);
  BoolResult (*canWrite)(const ImageGeometry&, eImageBufferType);
  void (*write)(File&, const Image&, const Calibration&);
};
constexpr Format tiff{readTiffInfo, readTiff, canWriteTiff, writeTiff};
constexpr Format png{readPngInfo, readPng, canWritePng, writePng};

File openForReading(const std::string& path) {
  const std::string prefix = "cannot read " + quote(path);
  // Not to wait for the other end should this be a pipe: it is refused anyway.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) raiseError(VEXO_HERE, moduleName, prefix, ": ", describeErrno(errno));
  return File(prefix, descriptor, std::filesystem::path(path).filename().string());
}

/// Tells the format of a file from its first bytes and leaves it at its start.
const Format& detectFormat(File& file) {
  struct stat status {};
  fstat(file.getDescriptor(), &status);
  if (S_ISDIR(status.st_mode)) raiseFileError(VEXO_HERE, file, "it is a folder");
  if (!S_ISREG(status.st_mode)) raiseFileError(VEXO_HERE, file, "it is no regular file");
  if (status.st_size == 0) raiseFileError(VEXO_HERE, file, "the file is empty");

  char start[8] = {};
  const auto size = std::min<std::size_t>(sizeof(start), static_cast<std::size_t>(status.st_size));
  if (file.read(start, size) != size || file.seek(0, SEEK_SET) != 0)
    raiseFileError(VEXO_HERE, file, file.getFailure());
  if (std::memcmp(start, "\x89PNG\r\n\x1a\n", 8) == 0) return png;
  for (const char* magic : {"II*\0", "MM\0*", "II+\0", "MM\0+"})
    if (std::memcmp(start, magic, 4) == 0) return tiff;
  raiseFileError(VEXO_HERE, file, "it is neither a TIFF nor a PNG image");
}

const Format& formatOfName(const Target& target) {
  std::string extension = std::filesystem::path(target.getPath()).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension == ".png") return png;
  if (extension.empty() || extension == ".tif" || extension == ".tiff") return tiff;
  raiseError(VEXO_HERE, moduleName, target.getErrorPrefix(), ": the extension ", quote(extension),
             " is none of .tif, .tiff and .png");
}

/// The format in which the image is to be written; throws when it cannot be.
const Format& chooseFormat(Target& target, const ImageGeometry& geometry, eImageBufferType type) {
  const Format& format = formatOfName(target);
  if (const BoolResult can = format.canWrite(geometry, type); !can)
    raiseError(VEXO_HERE, moduleName, target.getErrorPrefix(), ": ", can.getMessage());
  target.resolve();
  return format;
}

}  // namespace

ImageInfo readImageInfo(const std::string& path) {
  File file = openForReading(path);
  return detectFormat(file).readInfo(file);
}

boost::shared_ptr<Image> readImage(const std::string& path, ImageInfo* info) {
  File file = openForReading(path);
  ImageInfo unasked;
  return detectFormat(file).read(file, info ? *info : unasked);
}

void checkWritable(const std::string& path, const ImageGeometry& geometry, eImageBufferType type) {
  Target target(path);
  chooseFormat(target, geometry, type);
}

void writeImage(const Image& image, const std::string& path, const Calibration& calibration,
                const std::atomic<bool>* cancelled) {
  Target target(path, cancelled);
  const Format& format = chooseFormat(target, image.getGeometry(), image.getBufferType());
  format.write(target.begin(), image, calibration);
  target.commit();
}

}  // namespace vexo::image::io
