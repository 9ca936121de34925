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

void BaseSubImageSplit::initBase(eSubImageSplitType type,
                                 const boost::shared_ptr<const image::BaseImage>& image) {
  initBase(type,
           type == eSubImageSplitType::Plane2d ? eVolumeParsingType::SliceBySlice
                                               : eVolumeParsingType::WholeVolume,
           eColorParsingType::ChannelByChannel, eTemporalParsingType::FrameByFrame, image);
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

StripCutter::StripCutter(const image::ConstImagePtr& image, image::eStripParsingDirection direction,
                         image::eStripAllocationType allocation, const image::StripMargins& margins,
                         const std::string& attributeName)
    : _image(image), _direction(direction), _allocation(allocation), _margins(margins) {
  image::hostImage(_image, attributeName.c_str());
}

StripCutter::StripCutter(const image::ImagePtr& image, image::eStripParsingDirection direction,
                         image::eStripAllocationType allocation, const std::string& attributeName)
    : _image(image), _target(image), _direction(direction), _allocation(allocation) {
  image::hostImage(_image, attributeName.c_str());
}

StripCutter::Extent StripCutter::getExtent() const {
  const auto axis = static_cast<int>(_direction);
  return {{_image->getSizeX(), _image->getSizeY(), _image->getSizeZ()},
          _direction,
          std::max(_margins.before[axis], _margins.after[axis])};
}

void StripCutter::prepare(const image::StripBounds& bounds) {
  _bounds = bounds;
  if (_target || _allocation != image::eStripAllocationType::OwnBuffer) return;
  const auto& host = image::hostImage(_image, "input strip");
  const auto axis = copiedAxis();
  const std::size_t size = axis == image::eStripParsingDirection::Y ? _image->getSizeY() : _image->getSizeZ();
  _copies = image::StripMarginCopies::create(
      host, axis, axis == _direction ? bounds : image::StripBounds{0, size}, _margins);
}

boost::shared_ptr<const image::InputStrip> StripCutter::getInput(std::size_t i) const {
  return boost::make_shared<image::InputStrip>(_image, _direction, _bounds[i], _bounds[i + 1], _margins,
                                               _copies);
}

boost::shared_ptr<image::OutputStrip> StripCutter::getOutput(std::size_t i) const {
  return boost::make_shared<image::OutputStrip>(_target, _direction, _bounds[i], _bounds[i + 1], _allocation);
}

/// Where strips read what is written: beyond the cut; or, for a kernel along Y or Z that runs within its
/// strip, at the ends of that axis, where the border sends it back into the image. Along X a row is loaded
/// as a whole.
image::eStripParsingDirection StripCutter::copiedAxis() const {
  const auto reach = [this](int axis) { return std::max(_margins.before[axis], _margins.after[axis]); };
  if (reach(static_cast<int>(_direction)) == 0 && reach(0) == 0) {
    if (reach(1) > 0 && reach(2) == 0) return image::eStripParsingDirection::Y;
    if (reach(2) > 0 && reach(1) == 0) return image::eStripParsingDirection::Z;
  }
  return _direction;
}

}  // namespace vexo::imaproc
