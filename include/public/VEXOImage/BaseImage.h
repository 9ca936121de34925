#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <string>

#include "VEXOCore/Export.h"
#include "VEXOImage/ImageBufferType.h"

namespace vexo::image {

/// Sizes of an image: columns X, rows Y, slices Z, colour planes C, time frames T; each at least 1.
struct ImageGeometry {
  std::size_t x = 1, y = 1, z = 1, c = 1, t = 1;

  bool operator==(const ImageGeometry& o) const {
    return x == o.x && y == o.y && z == o.z && c == o.c && t == o.t;
  }
  bool operator!=(const ImageGeometry& o) const { return !(*this == o); }
};
/// "660 x 550", or "660 x 550 x 3 (z) x 2 (c) x 1 (t)" when it is more than a plane.
VEXO_API std::string toString(const ImageGeometry& geometry);

/// An image in the memory of the host or of the GPU: its geometry and sample type. Held by shared handles; a
/// shared_ptr<const BaseImage> may be read by any number of runs at once.
class VEXO_API BaseImage {
public:
  BaseImage(const BaseImage&) = delete;
  BaseImage& operator=(const BaseImage&) = delete;
  virtual ~BaseImage();

  const ImageGeometry& getGeometry() const { return _geometry; }
  std::size_t getSizeX() const { return _geometry.x; }
  std::size_t getSizeY() const { return _geometry.y; }
  std::size_t getSizeZ() const { return _geometry.z; }
  std::size_t getSizeC() const { return _geometry.c; }
  std::size_t getSizeT() const { return _geometry.t; }
  eImageBufferType getBufferType() const { return _type; }

  virtual bool isGpuImage() const = 0;
  /// A new image in the same kind of memory; its samples are not initialised.
  virtual boost::shared_ptr<BaseImage> createSimilar(const ImageGeometry& geometry,
                                                     eImageBufferType type) const = 0;
  /// `sizeZ` slices from `firstZ` on, of one colour plane and time frame: a view of the same samples, which
  /// it keeps alive. Throws when the range lies outside.
  boost::shared_ptr<BaseImage> getSubImage(std::size_t firstZ, std::size_t sizeZ, std::size_t c,
                                           std::size_t t);
  boost::shared_ptr<const BaseImage> getSubImage(std::size_t firstZ, std::size_t sizeZ, std::size_t c,
                                                 std::size_t t) const;

protected:
  /// Throws when a size is 0 or the samples do not fit the address space.
  BaseImage(const ImageGeometry& geometry, eImageBufferType type);
  virtual boost::shared_ptr<BaseImage> makeSubImage(std::size_t firstZ, std::size_t sizeZ, std::size_t c,
                                                    std::size_t t) const = 0;

private:
  const ImageGeometry _geometry;
  const eImageBufferType _type;
};

/// Handles of images: to be written, and to be read.
using ImagePtr = boost::shared_ptr<BaseImage>;
using ConstImagePtr = boost::shared_ptr<const BaseImage>;

}  // namespace vexo::image
