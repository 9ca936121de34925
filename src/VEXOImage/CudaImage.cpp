#include "VEXOImage/CudaImage.h"

#include "VEXOCore/Buffer.h"
#include "VEXOCore/Gpu.h"

namespace vexo::image {

CudaImage::CudaImage(boost::shared_ptr<void> memory, const ImageGeometry& geometry, eImageBufferType type)
    : BaseImage(geometry, type), _memory(std::move(memory)) {}

CudaImage::~CudaImage() = default;

boost::shared_ptr<CudaImage> CudaImage::create(const ImageGeometry& geometry, eImageBufferType type) {
  const ImageStrides strides = denseStrides(geometry, type);
  const std::size_t bytes =
      checkedMultiply(static_cast<std::size_t>(strides.t), geometry.t, "the size of an image on the GPU");
  return boost::shared_ptr<CudaImage>(new CudaImage(core::allocateOnGpu(bytes), geometry, type));
}

namespace {

/// Calls copy(device address, host address, host stride) for every slice.
template <class HostImage, class Copy>
void forEachSlice(unsigned char* device, HostImage& host, const Copy& copy) {
  const ImageGeometry& g = host.getGeometry();
  const ImageStrides dense = denseStrides(g, host.getBufferType());
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < g.z; ++z) {
        // A GPU copy wants a positive pitch: rows that are not laid out that way go one by one.
        const bool plain = host.getStrides().y >= dense.y || g.y == 1;
        unsigned char* slice = device + t * dense.t + c * dense.c + z * dense.z;
        if (plain) {
          copy(slice, host.getRow(0, z, c, t), g.y == 1 ? dense.y : host.getStrides().y, g.y);
        } else {
          for (std::size_t y = 0; y < g.y; ++y)
            copy(slice + y * dense.y, host.getRow(y, z, c, t), dense.y, 1);
        }
      }
}

}  // namespace

boost::shared_ptr<CudaImage> CudaImage::fromHost(const Image& image) {
  boost::shared_ptr<CudaImage> copy = create(image.getGeometry(), image.getBufferType());
  const std::size_t row = image.getSizeX() * getSampleSize(image.getBufferType());
  forEachSlice(static_cast<unsigned char*>(copy->getDeviceData()), image,
               [row](void* device, const void* host, std::ptrdiff_t stride, std::size_t rows) {
                 core::copyToGpu(device, row, host, static_cast<std::size_t>(stride), row, rows);
               });
  return copy;
}

boost::shared_ptr<Image> CudaImage::toHost() const {
  boost::shared_ptr<Image> copy = Image::create(getGeometry(), getBufferType());
  const std::size_t row = getSizeX() * getSampleSize(getBufferType());
  forEachSlice(static_cast<unsigned char*>(getDeviceData()), *copy,
               [row](const void* device, void* host, std::ptrdiff_t stride, std::size_t rows) {
                 core::copyFromGpu(host, static_cast<std::size_t>(stride), device, row, row, rows);
               });
  return copy;
}

boost::shared_ptr<BaseImage> CudaImage::createSimilar(const ImageGeometry& geometry,
                                                      eImageBufferType type) const {
  return create(geometry, type);
}

boost::shared_ptr<BaseImage> CudaImage::makeSubImage(std::size_t firstZ, std::size_t sizeZ, std::size_t c,
                                                     std::size_t t) const {
  ImageGeometry geometry = getGeometry();
  const ImageStrides strides = denseStrides(geometry, getBufferType());
  geometry.z = sizeZ;
  geometry.c = geometry.t = 1;
  void* first =
      static_cast<unsigned char*>(_memory.get()) + t * strides.t + c * strides.c + firstZ * strides.z;
  return boost::shared_ptr<CudaImage>(
      new CudaImage(boost::shared_ptr<void>(_memory, first), geometry, getBufferType()));
}

}  // namespace vexo::image
