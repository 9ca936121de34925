#pragma once

// What the targets of the image formats share.

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>

#include "Fuzz.h"
#include "VEXOImageIO/ImageIO.h"

namespace vexo::fuzz {

/// Images that claim more are not read; those of more than a few are read once and not written: that takes
/// long.
constexpr std::size_t mostImageBytes = std::size_t(64) << 20;
constexpr std::size_t fewImageBytes = std::size_t(64) << 10;

/// A file in memory that is filled anew for each input.
class InputFile {
public:
  InputFile() : _descriptor(memfd_create("input", MFD_CLOEXEC)) {
    require(_descriptor >= 0, "memfd_create fails");
    image::io::setMaxImageBytes(mostImageBytes);
  }
  std::string fill(const std::uint8_t* data, std::size_t size) {
    require(ftruncate(_descriptor, 0) == 0 && pwrite(_descriptor, data, size, 0) == ssize_t(size),
            "the input file cannot be written");
    return "/proc/self/fd/" + std::to_string(_descriptor);
  }

private:
  const int _descriptor;
};

/// A folder for what is written, removed at the end; in memory where the system has a place for that.
class OutputFolder {
public:
  OutputFolder() {
    const std::filesystem::path memory = "/dev/shm";
    _path = (access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path()) /
            ("vexo-fuzz-" + std::to_string(getpid()));
    std::filesystem::create_directory(_path);
  }
  ~OutputFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
  }
  std::string at(const std::string& name) const { return _path / name; }

private:
  std::filesystem::path _path;
};

inline std::size_t getBytes(const image::io::ImageInfo& info) {
  std::size_t bytes = getSampleSize(info.type);
  const auto& g = info.geometry;
  for (const std::size_t size : {g.x, g.y, g.z, g.c, g.t})
    if (__builtin_mul_overflow(bytes, size, &bytes)) return std::numeric_limits<std::size_t>::max();
  return bytes;
}

/// What is written must read back equal. Every image can be a TIFF file; which can be a PNG file is asked.
inline void checkWritten(const image::Image& image, const std::string& name) {
  static const OutputFolder folder;
  const std::string path = folder.at(name);
  const std::string refusal =
      refusalOf([&] { image::io::checkWritable(path, image.getGeometry(), image.getBufferType()); });
  if (std::filesystem::path(path).extension() == ".tif")
    require(refusal.empty(), "the image cannot be written: " + refusal);
  if (!refusal.empty()) return;
  image::io::writeImage(image, path);
  const std::string difference = test::findDifference(image, *image::io::readImage(path));
  require(difference.empty(), name + " reads back otherwise, " + difference);
}

/// Header, samples, and the way back: what can be read is consistent and can be written.
inline void checkFile(const std::uint8_t* data, std::size_t size) {
  static InputFile file;
  const std::string path = file.fill(data, size);
  image::io::ImageInfo info;
  const bool hasInfo = refusalOf([&] { info = image::io::readImageInfo(path); }).empty();
  if (hasInfo && getBytes(info) > mostImageBytes) return;
  boost::shared_ptr<image::Image> image;
  const bool isRead = refusalOf([&] { image = image::io::readImage(path); }).empty();
  if (!isRead) return;
  require(hasInfo, "an image can be read whose header cannot");
  require(info.geometry == image->getGeometry() && info.type == image->getBufferType(),
          "header and image differ: " + toString(info.geometry) + " and " + toString(image->getGeometry()));
  if (getBytes(info) > fewImageBytes) return;
  // Reading again, into memory that holds something else, gives the same: no sample is left as the memory
  // was. (The address sanitizer's memory always holds the same; a build without it finds this.)
  static int filling = 0;
  mallopt(M_PERTURB, filling = filling % 255 + 1);
  const std::string difference = test::findDifference(*image, *image::io::readImage(path));
  require(difference.empty(), "a second reading differs, " + difference);
  const auto& g = info.geometry;
  if (g.z * g.c * g.t > 64) return;  // each plane becomes a page, and a page takes its time
  checkWritten(*image, "written.tif");
  checkWritten(*image, "written.png");
}

}  // namespace vexo::fuzz
