#pragma once

#include "VEXOCore/BoolResult.h"
#include "VEXOImageIO/File.h"
#include "VEXOImageIO/ImageIO.h"

namespace vexo::image::io {

// The file formats. Files are read from their start, and written into an empty file that can be read as well.

ImageInfo readTiffInfo(File& file);
boost::shared_ptr<Image> readTiff(File& file, ImageInfo& info);
BoolResult canWriteTiff(const ImageGeometry& geometry, eImageBufferType type);
void writeTiff(File& file, const Image& image, const Calibration& calibration);

ImageInfo readPngInfo(File& file);
boost::shared_ptr<Image> readPng(File& file, ImageInfo& info);
BoolResult canWritePng(const ImageGeometry& geometry, eImageBufferType type);
void writePng(File& file, const Image& image, const Calibration& calibration);

/// The memory that the control groups of a process may take, of those that the file `list` names, below
/// `root`.
VEXO_API std::uint64_t getGroupMemory(const std::string& list, const std::string& root);
/// Throws when `what` takes more bytes than getMaxImageBytes().
void checkBytes(const File& file, std::uint64_t bytes, const std::string& what);
/// The same for the samples of such an image.
void checkImageBytes(const File& file, const ImageGeometry& geometry, eImageBufferType type);

/// Spreads pixels of interleaved channels over colour planes: channel 0 goes to (x, y, z, firstC, t), the
/// others to the planes that follow.
void storePixels(const void* pixels, std::size_t count, std::size_t channels, Image& image, std::size_t x,
                 std::size_t y, std::size_t z, std::size_t firstC, std::size_t t);
/// Interleaves the colour planes of a row of the first slice.
void loadPixels(const Image& image, std::size_t y, void* pixels);

}  // namespace vexo::image::io
