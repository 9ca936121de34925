#include "VEXOImage/Image.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <vector>

#include "VEXOCore/Buffer.h"
#include "VEXOCore/Log.h"

namespace vexo::image {
namespace {

constexpr const char* module = "VEXOImage";

/// Bytes of all samples; throws when a size is 0 or the bytes do not fit a signed size.
std::size_t checkedBytes(const ImageGeometry& g, eImageBufferType type) {
  if (g.x == 0 || g.y == 0 || g.z == 0 || g.c == 0 || g.t == 0)
    raiseError(VEXO_HERE, module, "image size ", toString(g), ": each size must be at least 1");
  std::size_t bytes = getSampleSize(type);
  for (const std::size_t n : {g.x, g.y, g.z, g.c, g.t}) {
    if (__builtin_mul_overflow(bytes, n, &bytes) || bytes > std::numeric_limits<std::ptrdiff_t>::max())
      raiseError(VEXO_HERE, module, "image size ", toString(g), " of ", toString(type),
                 " does not fit the address space");
  }
  return bytes;
}

struct Axis {
  std::ptrdiff_t stride;
  std::size_t size;
};

/// The axes Y, Z, C, T with more than one position.
std::vector<Axis> longAxes(const ImageGeometry& g, const ImageStrides& s) {
  std::vector<Axis> axes;
  for (const Axis& axis : {Axis{s.y, g.y}, Axis{s.z, g.z}, Axis{s.c, g.c}, Axis{s.t, g.t}})
    if (axis.size > 1) axes.push_back(axis);
  return axes;
}

std::size_t magnitude(std::ptrdiff_t stride) {
  return stride < 0 ? std::size_t(0) - static_cast<std::size_t>(stride) : static_cast<std::size_t>(stride);
}

void checkStrides(const ImageGeometry& g, eImageBufferType type, const ImageStrides& strides, bool writable) {
  const std::size_t sample = getSampleSize(type);
  std::vector<Axis> axes = longAxes(g, strides);
  std::sort(axes.begin(), axes.end(),
            [](const Axis& a, const Axis& b) { return magnitude(a.stride) < magnitude(b.stride); });
  std::size_t extent = sample * g.x;
  for (const Axis& axis : axes) {
    const std::size_t step = magnitude(axis.stride);
    if (step % sample != 0)
      raiseError(VEXO_HERE, module, "image stride ", axis.stride, " is not a multiple of the sample size ",
                 sample);
    if (writable && step < extent)
      raiseError(VEXO_HERE, module, "image stride ", axis.stride, " makes rows overlap: it must be at least ",
                 extent, " bytes in a writable image of ", toString(g));
    std::size_t span;
    if (__builtin_mul_overflow(step, axis.size - 1, &span) || __builtin_add_overflow(extent, span, &extent) ||
        extent > std::numeric_limits<std::ptrdiff_t>::max())
      raiseError(VEXO_HERE, module, "image stride ", axis.stride, " with size ", toString(g),
                 " does not fit the address space");
  }
}

/// The bytes [first, last) that an image spans.
struct Span {
  std::uintptr_t first, last;
};

Span getSpan(const Image& image) {
  Span span;
  span.first = reinterpret_cast<std::uintptr_t>(image.getData());
  span.last = span.first + image.getSizeX() * getSampleSize(image.getBufferType());
  for (const Axis& axis : longAxes(image.getGeometry(), image.getStrides())) {
    const std::size_t reach = magnitude(axis.stride) * (axis.size - 1);
    if (axis.stride < 0)
      span.first -= reach;
    else
      span.last += reach;
  }
  return span;
}

/// The most rows for which getOverlap looks at each row.
constexpr std::size_t maxComparedRows = std::size_t(1) << 20;

std::size_t countRows(const ImageGeometry& g) {
  return g.y * g.z * g.c * g.t;
}

void appendRows(const Image& image, std::vector<Span>& rows) {
  const ImageGeometry& g = image.getGeometry();
  const std::size_t bytes = g.x * getSampleSize(image.getBufferType());
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < g.z; ++z)
        for (std::size_t y = 0; y < g.y; ++y) {
          const auto first = reinterpret_cast<std::uintptr_t>(image.getRow(y, z, c, t));
          rows.push_back({first, first + bytes});
        }
}

/// True when no row of one image shares a byte with a row of the other, though both lie among each other.
bool areInterleaved(const Image& a, const Image& b) {
  if (countRows(a.getGeometry()) > maxComparedRows || countRows(b.getGeometry()) > maxComparedRows)
    return false;
  std::vector<Span> rowsA, rowsB;
  appendRows(a, rowsA);
  appendRows(b, rowsB);
  const auto byAddress = [](const Span& x, const Span& y) { return x.first < y.first; };
  std::sort(rowsA.begin(), rowsA.end(), byAddress);
  std::sort(rowsB.begin(), rowsB.end(), byAddress);
  for (std::size_t i = 0, j = 0; i < rowsA.size() && j < rowsB.size();) {
    if (rowsA[i].last <= rowsB[j].first)
      ++i;
    else if (rowsB[j].last <= rowsA[i].first)
      ++j;
    else
      return false;
  }
  return true;
}

}  // namespace

std::string toString(const ImageGeometry& g) {
  std::string text = std::to_string(g.x) + " x " + std::to_string(g.y);
  if (g.z != 1 || g.c != 1 || g.t != 1)
    text += " x " + std::to_string(g.z) + " (z) x " + std::to_string(g.c) + " (c) x " + std::to_string(g.t) +
            " (t)";
  return text;
}

BaseImage::BaseImage(const ImageGeometry& geometry, eImageBufferType type)
    : _geometry(geometry), _type(type) {
  checkedBytes(geometry, type);
}

BaseImage::~BaseImage() = default;

boost::shared_ptr<BaseImage> BaseImage::getSubImage(std::size_t firstZ, std::size_t sizeZ, std::size_t c,
                                                    std::size_t t) {
  if (sizeZ == 0 || firstZ >= _geometry.z || sizeZ > _geometry.z - firstZ || c >= _geometry.c ||
      t >= _geometry.t)
    raiseError(VEXO_HERE, module, "sub-image of ", sizeZ, " slices from z = ", firstZ, ", c = ", c,
               ", t = ", t, " lies outside an image of ", toString(_geometry));
  return makeSubImage(firstZ, sizeZ, c, t);
}

boost::shared_ptr<const BaseImage> BaseImage::getSubImage(std::size_t firstZ, std::size_t sizeZ,
                                                          std::size_t c, std::size_t t) const {
  return const_cast<BaseImage*>(this)->getSubImage(firstZ, sizeZ, c, t);
}

ImageStrides denseStrides(const ImageGeometry& g, eImageBufferType type) {
  checkedBytes(g, type);
  ImageStrides s;
  s.y = static_cast<std::ptrdiff_t>(g.x * getSampleSize(type));
  s.z = s.y * static_cast<std::ptrdiff_t>(g.y);
  s.c = s.z * static_cast<std::ptrdiff_t>(g.z);
  s.t = s.c * static_cast<std::ptrdiff_t>(g.c);
  return s;
}

Image::Image(void* data, const ImageGeometry& geometry, eImageBufferType type, const ImageStrides& strides,
             boost::shared_ptr<const void> owner)
    : BaseImage(geometry, type), _data(data), _strides(strides), _owner(std::move(owner)) {}

Image::~Image() = default;

boost::shared_ptr<Image> Image::create(const ImageGeometry& geometry, eImageBufferType type) {
  boost::shared_ptr<void> block = allocateBlock(checkedBytes(geometry, type));
  void* data = block.get();
  return boost::shared_ptr<Image>(
      new Image(data, geometry, type, denseStrides(geometry, type), std::move(block)));
}

boost::shared_ptr<Image> Image::wrap(void* data, const ImageGeometry& geometry, eImageBufferType type,
                                     const ImageStrides& strides, boost::shared_ptr<const void> owner) {
  if (!data) raiseError(VEXO_HERE, module, "cannot wrap a null address as an image");
  if (reinterpret_cast<std::uintptr_t>(data) % getSampleSize(type) != 0)
    raiseError(VEXO_HERE, module, "cannot wrap address ", data, ": it is not aligned to a sample of ",
               toString(type));
  checkedBytes(geometry, type);
  checkStrides(geometry, type, strides, true);
  return boost::shared_ptr<Image>(new Image(data, geometry, type, strides, std::move(owner)));
}

boost::shared_ptr<const Image> Image::wrapConst(const void* data, const ImageGeometry& geometry,
                                                eImageBufferType type, const ImageStrides& strides,
                                                boost::shared_ptr<const void> owner) {
  if (!data) raiseError(VEXO_HERE, module, "cannot wrap a null address as an image");
  if (reinterpret_cast<std::uintptr_t>(data) % getSampleSize(type) != 0)
    raiseError(VEXO_HERE, module, "cannot wrap address ", data, ": it is not aligned to a sample of ",
               toString(type));
  checkedBytes(geometry, type);
  checkStrides(geometry, type, strides, false);
  return boost::shared_ptr<Image>(
      new Image(const_cast<void*>(data), geometry, type, strides, std::move(owner)));
}

boost::shared_ptr<BaseImage> Image::createSimilar(const ImageGeometry& geometry,
                                                  eImageBufferType type) const {
  return create(geometry, type);
}

boost::shared_ptr<BaseImage> Image::makeSubImage(std::size_t firstZ, std::size_t sizeZ, std::size_t c,
                                                 std::size_t t) const {
  ImageGeometry geometry = getGeometry();
  geometry.z = sizeZ;
  geometry.c = geometry.t = 1;
  return boost::shared_ptr<Image>(
      new Image(rowAddress(0, firstZ, c, t), geometry, getBufferType(), _strides, _owner));
}

const Image& hostImage(const boost::shared_ptr<const BaseImage>& image, const char* what) {
  if (!image) raiseError(VEXO_HERE, module, what, ": the image is null");
  const auto* host = dynamic_cast<const Image*>(image.get());
  if (!host)
    raiseError(VEXO_HERE, module, what, ": the image is on the GPU, an image in host memory is needed");
  return *host;
}

Image& hostImage(const boost::shared_ptr<BaseImage>& image, const char* what) {
  return const_cast<Image&>(hostImage(boost::shared_ptr<const BaseImage>(image), what));
}

bool isSameBuffer(const BaseImage& a, const BaseImage& b) {
  const auto* first = dynamic_cast<const Image*>(&a);
  const auto* second = dynamic_cast<const Image*>(&b);
  if (!first || !second) return &a == &b;
  const ImageGeometry& g = a.getGeometry();
  const ImageStrides &sa = first->getStrides(), &sb = second->getStrides();
  const auto sameStep = [](std::size_t size, std::ptrdiff_t x, std::ptrdiff_t y) {
    return size == 1 || x == y;
  };
  return first->getData() == second->getData() && g == b.getGeometry() &&
         getSampleSize(a.getBufferType()) == getSampleSize(b.getBufferType()) && sameStep(g.y, sa.y, sb.y) &&
         sameStep(g.z, sa.z, sb.z) && sameStep(g.c, sa.c, sb.c) && sameStep(g.t, sa.t, sb.t);
}

eOverlap getOverlap(const BaseImage& a, const BaseImage& b) {
  if (isSameBuffer(a, b)) return eOverlap::Same;
  const auto* first = dynamic_cast<const Image*>(&a);
  const auto* second = dynamic_cast<const Image*>(&b);
  if (!first || !second) return eOverlap::None;
  const Span spanA = getSpan(*first), spanB = getSpan(*second);
  if (spanA.last <= spanB.first || spanB.last <= spanA.first) return eOverlap::None;
  return areInterleaved(*first, *second) ? eOverlap::None : eOverlap::Partial;
}

void copySamples(const Image& from, Image& to) {
  const ImageGeometry& g = from.getGeometry();
  if (g != to.getGeometry() || from.getBufferType() != to.getBufferType())
    raiseError(VEXO_HERE, module, "cannot copy an image of ", toString(g), " ",
               toString(from.getBufferType()), " to one of ", toString(to.getGeometry()), " ",
               toString(to.getBufferType()));
  const std::size_t bytes = g.x * getSampleSize(from.getBufferType());
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < g.z; ++z)
        for (std::size_t y = 0; y < g.y; ++y)
          std::memcpy(to.getRow(y, z, c, t), from.getRow(y, z, c, t), bytes);
}

}  // namespace vexo::image
