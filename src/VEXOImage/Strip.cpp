#include "VEXOImage/Strip.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cmath>
#include <cstring>
#include <limits>

#include "VEXOCore/Log.h"

namespace vexo::image {
namespace {

/// More than a core's share of the last cache.
constexpr std::size_t streamedBytes = std::size_t(32) << 20;

std::size_t sizeAlong(const BaseImage& image, int axis) {
  return axis == 0 ? image.getSizeX() : axis == 1 ? image.getSizeY() : image.getSizeZ();
}

void checkStrip(const BaseImage& image, eStripParsingDirection direction, std::size_t begin,
                std::size_t end) {
  const int axis = static_cast<int>(direction);
  if (begin >= end || end > sizeAlong(image, axis))
    raiseError(VEXO_HERE, "VEXOImage", "strip [", begin, ", ", end, ") along ", "XYZ"[axis],
               " lies outside an image of ", toString(image.getGeometry()));
}

/// A part of a plane or volume as an image of its own over the same samples.
boost::shared_ptr<Image> makeRegion(Image& image, int axis, std::size_t begin, std::size_t end) {
  ImageGeometry g = image.getGeometry();
  auto* data = static_cast<unsigned char*>(image.getData());
  const auto first = static_cast<std::ptrdiff_t>(begin);
  if (axis == 0) {
    g.x = end - begin;
    data += first * static_cast<std::ptrdiff_t>(getSampleSize(image.getBufferType()));
  } else if (axis == 1) {
    g.y = end - begin;
    data += first * image.getStrides().y;
  } else {
    g.z = end - begin;
    data += first * image.getStrides().z;
  }
  return Image::wrap(data, g, image.getBufferType(), image.getStrides());
}

/// The constant of a border as a sample of the image: rounded half away from zero, saturated, NaN is 0 in
/// integers.
void storeConstant(double value, eImageBufferType type, unsigned char* sample) {
  visitBufferType(type, [&](auto zero) {
    using T = decltype(zero);
    T converted;
    if constexpr (std::is_same_v<T, float>) {
      converted = static_cast<float>(value);
    } else {
      const double low = std::numeric_limits<T>::lowest(), high = std::numeric_limits<T>::max();
      const double rounded = std::round(value);
      converted = value != value ? T(0)
                                 : static_cast<T>(rounded < low    ? low
                                                  : rounded > high ? high
                                                                   : rounded);
    }
    std::memcpy(sample, &converted, sizeof converted);
  });
}

}  // namespace

boost::shared_ptr<const StripMarginCopies> StripMarginCopies::create(const Image& image,
                                                                     eStripParsingDirection along,
                                                                     const StripBounds& bounds,
                                                                     const StripMargins& margins) {
  const int axis = static_cast<int>(along);
  const std::size_t reach = std::max(margins.before[axis], margins.after[axis]);
  if (reach == 0) return nullptr;
  const std::size_t size = sizeAlong(image, axis);

  auto copies = boost::make_shared<StripMarginCopies>();
  copies->_axis = axis;
  ImageGeometry g = image.getGeometry();
  // Whatever the border policy, a position outside a strip stands for one within `reach` of a bound (the ends
  // of the image are bounds too), unless the window is larger than the image: then everything is near a
  // bound.
  std::vector<std::ptrdiff_t> position(size, -1);
  std::vector<std::size_t> kept;
  std::size_t next = 0;
  for (const std::size_t bound : bounds)
    for (std::size_t p = std::max(next, bound > reach ? bound - reach : 0); p < size && p < bound + reach;
         next = ++p) {
      position[p] = static_cast<std::ptrdiff_t>(kept.size());
      kept.push_back(p);
    }
  if (kept.size() > size / 2) {
    copies->_copy = Image::create(g, image.getBufferType());
    copySamples(image, *copies->_copy);
    return copies;
  }

  copies->_position = std::move(position);
  (axis == 0 ? g.x : axis == 1 ? g.y : g.z) = kept.size();
  copies->_copy = Image::create(g, image.getBufferType());
  auto& source = const_cast<Image&>(image);
  for (std::size_t i = 0, end; i < kept.size(); i = end) {
    for (end = i + 1; end < kept.size() && kept[end] == kept[end - 1] + 1;) ++end;
    copySamples(*makeRegion(source, axis, kept[i], kept[i] + (end - i)),
                *makeRegion(*copies->_copy, axis, i, end));
  }
  return copies;
}

void StripMarginCopies::fill(StripSource& source) const {
  const auto* samples = static_cast<const unsigned char*>(_copy->getData());
  if (isWhole()) {
    source.image = samples;
    source.rowStride = _copy->getStrides().y;
    source.sliceStride = _copy->getStrides().z;
    return;
  }
  source.saved = samples;
  source.savedAxis = _axis;
  source.savedPosition = _position.data();
  source.savedRowStride = _copy->getStrides().y;
  source.savedSliceStride = _copy->getStrides().z;
}

bool InputStrip::isOverwrittenBy(const OutputStrip& other) const {
  return isSameBuffer(*_image, *other.getImage()) && !other.hasOwnBuffer() &&
         !(_copies && _copies->isWhole());
}

InputStrip::InputStrip(boost::shared_ptr<const BaseImage> image, eStripParsingDirection direction,
                       std::size_t begin, std::size_t end, const StripMargins& margins,
                       boost::shared_ptr<const StripMarginCopies> copies)
    : _image(std::move(image)),
      _direction(direction),
      _begin(begin),
      _end(end),
      _margins(margins),
      _copies(std::move(copies)) {
  hostImage(_image, "input strip");
  checkStrip(*_image, direction, begin, end);
}

StripSource InputStrip::makeSource(const BorderPolicy& border) const {
  const Image& image = hostImage(_image, "input strip");
  StripSource source{};
  source.image = static_cast<const unsigned char*>(image.getData());
  source.rowStride = image.getStrides().y;
  source.sliceStride = image.getStrides().z;
  for (int axis = 0; axis < 3; ++axis) {
    source.size[axis] = source.end[axis] = static_cast<std::ptrdiff_t>(sizeAlong(image, axis));
    source.marginBefore[axis] = static_cast<std::ptrdiff_t>(_margins.before[axis]);
    source.marginAfter[axis] = static_cast<std::ptrdiff_t>(_margins.after[axis]);
  }
  const int axis = static_cast<int>(_direction);
  source.begin[axis] = static_cast<std::ptrdiff_t>(_begin);
  source.end[axis] = static_cast<std::ptrdiff_t>(_end);
  source.sampleSize = static_cast<int>(getSampleSize(image.getBufferType()));
  source.border = border.getBorder();
  storeConstant(border.getConstant(), image.getBufferType(), source.constant);
  if (_copies) _copies->fill(source);
  return source;
}

OutputStrip::OutputStrip(boost::shared_ptr<BaseImage> image, eStripParsingDirection direction,
                         std::size_t begin, std::size_t end, eStripAllocationType allocation)
    : _image(std::move(image)), _direction(direction), _begin(begin), _end(end) {
  hostImage(_image, "output strip");
  checkStrip(*_image, direction, begin, end);
  if (allocation == eStripAllocationType::OwnBuffer) {
    const boost::shared_ptr<Image> viewed = region();
    _own = Image::create(viewed->getGeometry(), viewed->getBufferType());
    copySamples(*viewed, *_own);
  }
}

boost::shared_ptr<Image> OutputStrip::region() const {
  return makeRegion(hostImage(_image, "output strip"), static_cast<int>(_direction), _begin, _end);
}

StripTarget OutputStrip::makeTarget() {
  const boost::shared_ptr<Image> samples = _own ? _own : region();
  StripTarget target{};
  target.data = static_cast<unsigned char*>(samples->getData());
  target.rowStride = samples->getStrides().y;
  target.sliceStride = samples->getStrides().z;
  for (int axis = 0; axis < 3; ++axis)
    target.end[axis] = static_cast<std::ptrdiff_t>(sizeAlong(*_image, axis));
  target.begin[static_cast<int>(_direction)] = static_cast<std::ptrdiff_t>(_begin);
  target.end[static_cast<int>(_direction)] = static_cast<std::ptrdiff_t>(_end);
  target.sampleSize = static_cast<int>(getSampleSize(_image->getBufferType()));
  const std::size_t rows = sizeAlong(*_image, 1) * sizeAlong(*_image, 2);
  target.streamed =
      !_own && sizeAlong(*_image, 0) * rows >= streamedBytes / getSampleSize(_image->getBufferType());
  return target;
}

void OutputStrip::commit() {
  if (_own) copySamples(*_own, *region());
}

}  // namespace vexo::image
