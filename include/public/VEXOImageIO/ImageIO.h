#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "VEXOCore/Export.h"
#include "VEXOImage/Image.h"

namespace vexo::image::io {

/// What the header of an image file says.
struct ImageInfo {
  ImageGeometry geometry;
  eImageBufferType type = eImageBufferType::UInt8;
};

// The format of a file that is read is told from its first bytes, that of a file that is written from its
// name: ".tif",
// ".tiff" (or no extension at all) and ".png", in any case. Everything below throws a BaseException that
// names the path and what is wrong with it.
//
// TIFF: pages are slices Z; ImageJ hyperstack metadata divides them into C, Z and T; samples per pixel of a
// colour image are colour planes C. Strips and tiles, every compression libtiff knows, BigTIFF, all seven
// sample types. PNG: 8 and 16 bits, grey (lower depths are widened to 8 bits), palettes (expanded) and
// colour, whose channels, alpha included, are colour planes C.

/// Geometry and sample type, without reading a sample.
VEXO_API ImageInfo readImageInfo(const std::string& path);
/// The whole image. A file that ends early, or whose pages differ in size or type, is refused.
VEXO_API boost::shared_ptr<Image> readImage(const std::string& path);

/// Throws when an image of this geometry and type cannot be written under this name: unknown extension, a
/// type or geometry the format cannot hold, a folder that does not exist, a folder at the path itself.
/// Nothing is touched.
VEXO_API void checkWritable(const std::string& path, const ImageGeometry& geometry, eImageBufferType type);
/// Writes the image aside and then renames it over the path (what a link at the path points to is replaced,
/// not the link), so that the old file stays whole until the new one is complete. A path that is no regular
/// file, such as a device, receives the bytes of the finished file directly.
VEXO_API void writeImage(const Image& image, const std::string& path);

}  // namespace vexo::image::io
