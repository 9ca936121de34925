#pragma once

#include "VEXOImage/BaseImage.h"

namespace vexo::image {

/// Distances in bytes between neighbours along Y, Z, C and T; neighbours along X are adjacent samples. May be
/// negative, and for an image that is only read also 0. Each is a multiple of the sample size.
struct ImageStrides {
  std::ptrdiff_t y = 0, z = 0, c = 0, t = 0;
};
/// Strides of samples without gaps.
VEXO_API ImageStrides denseStrides(const ImageGeometry& geometry, eImageBufferType type);

/// An image in host memory.
class VEXO_API Image final : public BaseImage {
public:
  ~Image() override;

  /// A new image; its samples are not initialised. Rows follow one another without gaps.
  static boost::shared_ptr<Image> create(const ImageGeometry& geometry, eImageBufferType type);
  /// An image over memory of someone else; `owner` keeps that memory alive and may be empty. `data` is the
  /// sample (0, 0, 0, 0, 0) and aligned to the sample size. Throws when `data` is null or a stride is refused
  /// (a writable image must not reach a sample in two ways).
  static boost::shared_ptr<Image> wrap(void* data, const ImageGeometry& geometry, eImageBufferType type,
                                       const ImageStrides& strides, boost::shared_ptr<const void> owner = {});
  static boost::shared_ptr<const Image> wrapConst(const void* data, const ImageGeometry& geometry,
                                                  eImageBufferType type, const ImageStrides& strides,
                                                  boost::shared_ptr<const void> owner = {});

  const ImageStrides& getStrides() const { return _strides; }
  void* getData() { return _data; }
  const void* getData() const { return _data; }

  /// Address of the first sample of a row. Indices are not checked; T must be the sample type.
  template <class T = void>
  T* getRow(std::size_t y, std::size_t z = 0, std::size_t c = 0, std::size_t t = 0) {
    return static_cast<T*>(rowAddress(y, z, c, t));
  }
  template <class T = void>
  const T* getRow(std::size_t y, std::size_t z = 0, std::size_t c = 0, std::size_t t = 0) const {
    return static_cast<const T*>(rowAddress(y, z, c, t));
  }

  bool isGpuImage() const override { return false; }
  boost::shared_ptr<BaseImage> createSimilar(const ImageGeometry& geometry,
                                             eImageBufferType type) const override;

private:
  Image(void* data, const ImageGeometry& geometry, eImageBufferType type, const ImageStrides& strides,
        boost::shared_ptr<const void> owner);
  boost::shared_ptr<BaseImage> makeSubImage(std::size_t firstZ, std::size_t sizeZ, std::size_t c,
                                            std::size_t t) const override;
  void* rowAddress(std::size_t y, std::size_t z, std::size_t c, std::size_t t) const {
    return static_cast<unsigned char*>(_data) + static_cast<std::ptrdiff_t>(y) * _strides.y +
           static_cast<std::ptrdiff_t>(z) * _strides.z + static_cast<std::ptrdiff_t>(c) * _strides.c +
           static_cast<std::ptrdiff_t>(t) * _strides.t;
  }

  void* const _data;
  const ImageStrides _strides;
  const boost::shared_ptr<const void> _owner;
};

/// The host image behind a handle; throws, naming `what`, when the handle is null or the image is on the GPU.
VEXO_API Image& hostImage(const boost::shared_ptr<BaseImage>& image, const char* what);
VEXO_API const Image& hostImage(const boost::shared_ptr<const BaseImage>& image, const char* what);

/// True when both are one image, or reach the same samples: same address, strides, sizes and sample size. A
/// filter may then run in place.
VEXO_API bool isSameBuffer(const BaseImage& a, const BaseImage& b);

/// How the samples of two images lie to one another.
enum class eOverlap { None, Same, Partial };
/// None: no byte is shared. Same: isSameBuffer. Partial: anything else, where a filter would read what it has
/// already overwritten; also images of over a million rows that lie among each other, whose rows are not
/// compared.
VEXO_API eOverlap getOverlap(const BaseImage& a, const BaseImage& b);

/// Copies all samples; geometry and type must be equal. Both on the host.
VEXO_API void copySamples(const Image& from, Image& to);

}  // namespace vexo::image
