#pragma once

#include "VEXOImage/Image.h"

namespace vexo::imaproc::filter {

/// The image, or a copy of it when it is the output as well.
inline boost::shared_ptr<const image::BaseImage> copyIfWritten(
    const boost::shared_ptr<const image::BaseImage>& image,
    const boost::shared_ptr<image::BaseImage>& output) {
  if (!image::isSameBuffer(*image, *output)) return image;
  const auto copy = image::Image::create(image->getGeometry(), image->getBufferType());
  image::copySamples(image::hostImage(image, "image to copy"), *copy);
  return copy;
}

}  // namespace vexo::imaproc::filter
