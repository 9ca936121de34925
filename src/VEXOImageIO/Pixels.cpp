#include "VEXOImageIO/Format.h"

namespace vexo::image::io {
namespace {

template <class Sample>
void spread(const Sample* pixels, std::size_t count, std::size_t channels, Sample* plane) {
  for (std::size_t i = 0; i < count; ++i) plane[i] = pixels[i * channels];
}

template <class Sample>
void gather(const Sample* plane, std::size_t count, std::size_t channels, Sample* pixels) {
  for (std::size_t i = 0; i < count; ++i) pixels[i * channels] = plane[i];
}

}  // namespace

void storePixels(const void* pixels, std::size_t count, std::size_t channels, Image& image, std::size_t x,
                 std::size_t y, std::size_t z, std::size_t firstC, std::size_t t) {
  visitBufferType(image.getBufferType(), [&](auto sample) {
    using Sample = decltype(sample);
    const auto* from = static_cast<const Sample*>(pixels);
    for (std::size_t c = 0; c < channels; ++c)
      spread(from + c, count, channels, image.getRow<Sample>(y, z, firstC + c, t) + x);
  });
}

void loadPixels(const Image& image, std::size_t y, void* pixels) {
  visitBufferType(image.getBufferType(), [&](auto sample) {
    using Sample = decltype(sample);
    const std::size_t channels = image.getSizeC();
    for (std::size_t c = 0; c < channels; ++c)
      gather(image.getRow<Sample>(y, 0, c), image.getSizeX(), channels, static_cast<Sample*>(pixels) + c);
  });
}

}  // namespace vexo::image::io
