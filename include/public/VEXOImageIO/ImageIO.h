#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string>

#include "VEXOCore/Export.h"
#include "VEXOImage/Image.h"

namespace vexo::image::io {

/// Physical sizes, and how the channels are to be shown, as far as a file tells. 0 and "" are unknown.
struct Calibration {
  double pixelWidth = 0, pixelHeight = 0;  ///< in units
  double spacing = 0;                      ///< of the slices, in units
  std::string unit;                        ///< UTF-8: "µm", "inch"; at most 64 bytes
  double frameInterval = 0;                ///< seconds
  std::string displayMode;                 ///< "composite", "color" or "grayscale"
};

/// What the header of an image file says.
struct ImageInfo {
  ImageGeometry geometry;
  eImageBufferType type = eImageBufferType::UInt8;
  Calibration calibration;
};

// The format of a file that is read is told from its first bytes, that of a file that is written from its
// name: ".tif", ".tiff" (or no extension at all) and ".png", in any case. Everything below throws a
// BaseException that names the path and what is wrong with it. docs/files.md says what is read, what is
// refused and what is written.

/// Geometry, sample type and calibration, without reading a sample.
VEXO_API ImageInfo readImageInfo(const std::string& path);
/// The whole image, and in `info` what its header says. A file that ends early, that cannot hold what its
/// header states, or whose pages differ in size or type, is refused.
VEXO_API boost::shared_ptr<Image> readImage(const std::string& path, ImageInfo* info = nullptr);

/// Files whose samples take more bytes than this, decoded, are refused before memory is asked for, by both of
/// the above. At first, and after 0, it is half the memory of the machine, or of the process's
/// control group where that has less. For the whole process.
VEXO_API void setMaxImageBytes(std::uint64_t bytes);
VEXO_API std::uint64_t getMaxImageBytes();

/// Throws when an image of this geometry and type cannot be written under this name: unknown extension, a
/// type or geometry the format cannot hold, a folder that does not exist, a folder at the path itself.
/// Nothing is touched.
VEXO_API void checkWritable(const std::string& path, const ImageGeometry& geometry, eImageBufferType type);
/// Writes the image aside, and puts it in the place of the path (of what a link at the path points to, not of
/// the link) when it is complete and on the disk: a failure, the end of the process or a power cut leaves the
/// old file or the new one. A path that is no regular file, such as a device, receives the bytes of the
/// finished file directly. Of the calibration is kept what the format can hold. When `cancelled` is given and
/// becomes true before the file is in place, writing fails.
VEXO_API void writeImage(const Image& image, const std::string& path, const Calibration& calibration = {},
                         const std::atomic<bool>* cancelled = nullptr);

}  // namespace vexo::image::io
