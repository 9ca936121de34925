#pragma once

#include "VEXOImage/Image.h"

namespace vexo::image {

/// An image in the memory of the GPU, its rows without gaps. Creating one throws when there is no GPU support
/// (vexo::core::isGpuSupportActivated()).
class VEXO_API CudaImage final : public BaseImage {
public:
  ~CudaImage() override;

  /// A new image; its samples are not initialised.
  static boost::shared_ptr<CudaImage> create(const ImageGeometry& geometry, eImageBufferType type);
  /// A copy on the GPU of a host image, and back.
  static boost::shared_ptr<CudaImage> fromHost(const Image& image);
  boost::shared_ptr<Image> toHost() const;

  bool isGpuImage() const override { return true; }
  /// Device address of sample (0, 0, 0, 0, 0).
  void* getDeviceData() const { return _memory.get(); }

  boost::shared_ptr<BaseImage> createSimilar(const ImageGeometry& geometry,
                                             eImageBufferType type) const override;

private:
  CudaImage(boost::shared_ptr<void> memory, const ImageGeometry& geometry, eImageBufferType type);
  boost::shared_ptr<BaseImage> makeSubImage(std::size_t firstZ, std::size_t sizeZ, std::size_t c,
                                            std::size_t t) const override;

  const boost::shared_ptr<void> _memory;  ///< of a sub-image: an alias into the memory of the whole
};

}  // namespace vexo::image
