#include "VEXOProcessing/ImageSplit.h"

#include "VEXOCore/Buffer.h"

namespace vexo::imaproc {

BoolResult BaseSubImageSplit::initBase(eSubImageSplitType type, eVolumeParsingType volume, eColorParsingType,
                                       eTemporalParsingType,
                                       const boost::shared_ptr<const image::BaseImage>& image) {
  if (!image) raiseError(VEXO_HERE, "VEXOProcessing", "cannot split a null image");
  _planes = type == eSubImageSplitType::Plane2d;
  if (_planes != (volume == eVolumeParsingType::SliceBySlice))
    return BoolResult::failure("planes are parsed slice by slice, volumes as a whole");
  _image = image;
  _count = image->getSizeT() * image->getSizeC() * (_planes ? image->getSizeZ() : 1);
  return true;
}

boost::shared_ptr<const image::BaseImage> BaseSubImageSplit::getSubImage(std::size_t index) const {
  const std::size_t slices = _planes ? _image->getSizeZ() : 1;
  const std::size_t z = index % slices, c = index / slices % _image->getSizeC(),
                    t = index / slices / _image->getSizeC();
  return _image->getSubImage(z, _planes ? 1 : _image->getSizeZ(), c, t);
}

namespace {

void checkMargins(const image::StripMargins& margins) {
  for (int axis = 0; axis < 3; ++axis)
    for (const std::size_t margin : {margins.before[axis], margins.after[axis]})
      if (margin > image::maxStripMargin)
        raiseError(VEXO_HERE, "VEXOProcessing", "the kernel reaches ", margin, " samples along ", "XYZ"[axis],
                   ", more than ", image::maxStripMargin);
}

}  // namespace

image::StripMargins centredMargins(std::size_t halfX, std::size_t halfY, std::size_t halfZ) {
  const image::StripMargins margins{{halfX, halfY, halfZ}, {halfX, halfY, halfZ}};
  checkMargins(margins);
  return margins;
}

image::StripMargins kernelMargins(const KernelXY& kernel) {
  const auto reach = kernel.getExtent();
  const image::StripMargins margins{{reach[0].before, reach[1].before, 0},
                                    {reach[0].after, reach[1].after, 0}};
  checkMargins(margins);
  return margins;
}

image::StripMargins kernelMargins(const KernelXYZ& kernel) {
  const auto reach = kernel.getExtent();
  const image::StripMargins margins{{reach[0].before, reach[1].before, reach[2].before},
                                    {reach[0].after, reach[1].after, reach[2].after}};
  checkMargins(margins);
  return margins;
}

}  // namespace vexo::imaproc
