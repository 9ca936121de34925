#pragma once

#include <boost/shared_ptr.hpp>
#include <vector>

#include "VEXOCore/Export.h"
#include "VEXOImage/Border.h"
#include "VEXOImage/Image.h"
#include "VEXOImage/StripView.h"

namespace vexo::image {

/// The axis along which an image is cut into strips.
enum class eStripParsingDirection { X = 0, Y = 1, Z = 2 };

/// Where the samples of a strip lie.
enum class eStripAllocationType {
  View,      ///< in the image itself
  OwnBuffer  ///< in a buffer of the strip's own, as far as other strips, or the strip itself, write what it
             ///< reads
};

/// Kernel margins around a strip, before and after it on each axis X, Y, Z.
struct StripMargins {
  std::size_t before[3] = {0, 0, 0};
  std::size_t after[3] = {0, 0, 0};
};
/// Largest margin that is accepted, in samples. Windows beyond it are certainly a mistake, and the memory a
/// kernel takes for its lines stays within bounds.
constexpr std::size_t maxStripMargin = 32767;

/// A cut of an axis of length n: strip i is [bounds[i], bounds[i + 1]); the first bound is 0, the last n.
using StripBounds = std::vector<std::size_t>;

/// Copies of what strips read outside themselves, taken while nothing has been overwritten: the samples near
/// the bounds of the strips on an axis. Where these would be more than half of the image, all of it is
/// copied, and the strips read nothing else.
class VEXO_API StripMarginCopies {
public:
  /// Null when the margins on the axis are 0, because then no strip reads what another writes.
  static boost::shared_ptr<const StripMarginCopies> create(const Image& image, eStripParsingDirection axis,
                                                           const StripBounds& bounds,
                                                           const StripMargins& margins);
  void fill(StripSource& source) const;
  bool isWhole() const { return _position.empty(); }

private:
  int _axis;
  boost::shared_ptr<Image> _copy;
  std::vector<std::ptrdiff_t>
      _position;  ///< in the copy, of each position on the axis; empty for a copy of all
};

class OutputStrip;

/// A strip that is read, with margins on all axes (0 without a kernel).
class VEXO_API InputStrip {
public:
  InputStrip(boost::shared_ptr<const BaseImage> image, eStripParsingDirection direction, std::size_t begin,
             std::size_t end, const StripMargins& margins,
             boost::shared_ptr<const StripMarginCopies> copies = {});

  const boost::shared_ptr<const BaseImage>& getImage() const { return _image; }
  const StripMargins& getMargins() const { return _margins; }
  eImageBufferType getBufferType() const { return _image->getBufferType(); }
  /// True when the strip reads samples that the other writes.
  bool isOverwrittenBy(const OutputStrip& other) const;
  StripSource makeSource(const BorderPolicy& border) const;

private:
  boost::shared_ptr<const BaseImage> _image;
  eStripParsingDirection _direction;
  std::size_t _begin, _end;
  StripMargins _margins;
  boost::shared_ptr<const StripMarginCopies> _copies;
};

/// A strip that is written. With a buffer of its own the samples are copied in before the kernel runs, so
/// that it may also read them, and copied back by commit(), called after the kernel has succeeded.
class VEXO_API OutputStrip {
public:
  OutputStrip(boost::shared_ptr<BaseImage> image, eStripParsingDirection direction, std::size_t begin,
              std::size_t end, eStripAllocationType allocation);

  const boost::shared_ptr<BaseImage>& getImage() const { return _image; }
  eImageBufferType getBufferType() const { return _image->getBufferType(); }
  StripTarget makeTarget();
  void commit();
  bool hasOwnBuffer() const { return static_cast<bool>(_own); }

private:
  boost::shared_ptr<Image> region() const;

  boost::shared_ptr<BaseImage> _image;
  eStripParsingDirection _direction;
  std::size_t _begin, _end;
  boost::shared_ptr<Image> _own;
};

// The strips by their usual names.
using InputImageYStrip2d = InputStrip;
using InputImageYStrip2dWithKernel = InputStrip;
using OutputImageYStrip2d = OutputStrip;
using InOutImageYStrip2d = OutputStrip;
using InputImageXStrip2d = InputStrip;
using InputImageXStrip2dWithKernel = InputStrip;
using OutputImageXStrip2d = OutputStrip;
using InOutImageXStrip2d = OutputStrip;
using InputImageZStrip3d = InputStrip;
using InputImageZStrip3dWithKernel = InputStrip;
using OutputImageZStrip3d = OutputStrip;
using InOutImageZStrip3d = OutputStrip;

/// What a third-level processor keeps per strip attribute: it turns the strip into the plain data that
/// kernels read lines from, or write lines to.
class InputStripParser {
public:
  void setBorder2dPolicy(const boost::shared_ptr<const Border2dPolicy>& border) { _border = *border; }
  void setBorder3dPolicy(const boost::shared_ptr<const Border3dPolicy>& border) { _border = *border; }
  const BorderPolicy& getBorder() const { return _border; }
  StripSource parse(const InputStrip& strip) const { return strip.makeSource(_border); }

private:
  BorderPolicy _border;
};
class OutputStripParser {
public:
  StripTarget parse(OutputStrip& strip) const { return strip.makeTarget(); }
};

// The parsers by their usual names.
using BaseLineYStrip2dParser = OutputStripParser;
using BaseLineYStrip2dWithKernelParser = InputStripParser;
using BaseLineXStrip2dParser = OutputStripParser;
using BaseLineXStrip2dWithKernelParser = InputStripParser;
using BaseLineZStrip3dParser = OutputStripParser;
using BaseLineZStrip3dWithKernelParser = InputStripParser;

}  // namespace vexo::image
