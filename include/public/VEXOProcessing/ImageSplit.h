#pragma once

#include "VEXOMath/Kernel.h"
#include "VEXOProcessing/Split.h"

namespace vexo::imaproc {

// Splits by hand, for one attribute of one class. Filters hand their images on by Levels.h.

/// The pieces that images are cut into: 2d planes (t outermost, then c, then z), or 3d volumes (t, then c).
enum class eSubImageSplitType { Plane2d, Volume3d };
/// How each further dimension is parsed; the combination must fit the split type.
enum class eVolumeParsingType { SliceBySlice, WholeVolume };
enum class eColorParsingType { ChannelByChannel };
enum class eTemporalParsingType { FrameByFrame };

/// Cuts an image into the planes or volumes that an algorithm works on.
class VEXO_API BaseSubImageSplit {
public:
  BoolResult initBase(eSubImageSplitType type, eVolumeParsingType volume, eColorParsingType color,
                      eTemporalParsingType temporal, const boost::shared_ptr<const image::BaseImage>& image);
  /// The usual parsing of the type: every plane, or every volume.
  void initBase(eSubImageSplitType type, const boost::shared_ptr<const image::BaseImage>& image);
  std::size_t getSubImageCount() const { return _count; }
  boost::shared_ptr<const image::BaseImage> getSubImage(std::size_t index) const;

private:
  boost::shared_ptr<const image::BaseImage> _image;
  bool _planes = true;
  std::size_t _count = 0;
};

/// One sub-image for each run.
template <class P, class A>
class SubImageSplit : public processor::TargetedSplit<processor::BaseStaticSplit, P, A>,
                      public BaseSubImageSplit {
public:
  using Handle = typename A::StorageType;
  SubImageSplit(const Handle& image, eSubImageSplitType type) { initBase(type, image); }
  std::optional<std::size_t> getPieceCount() const override { return getSubImageCount(); }

protected:
  Handle getValue(std::size_t pieceIndex) const override {
    // The handle that was given decides whether the pieces may be written.
    return boost::const_pointer_cast<typename Handle::element_type>(this->getSubImage(pieceIndex));
  }
};
/// As SubImageSplit, for images on the GPU; refuses others.
template <class P, class A>
class CudaSubImageSplit : public SubImageSplit<P, A> {
public:
  CudaSubImageSplit(const typename A::StorageType& image, eSubImageSplitType type)
      : SubImageSplit<P, A>(requireGpu(image), type) {}

private:
  static const typename A::StorageType& requireGpu(const typename A::StorageType& image) {
    if (!image || !image->isGpuImage())
      raiseError(VEXO_HERE, "VEXOProcessing", A::info().name, ": an image on the GPU is needed");
    return image;
  }
};

/// One element of a collection for each run, indexed like the sub-images.
template <class P, class A>
class PlanIndexedSplit : public processor::TargetedSplit<processor::BaseStaticSplit, P, A> {
public:
  explicit PlanIndexedSplit(std::vector<typename A::StorageType> values) : _values(std::move(values)) {}
  std::optional<std::size_t> getPieceCount() const override { return _values.size(); }

protected:
  typename A::StorageType getValue(std::size_t pieceIndex) const override { return _values.at(pieceIndex); }

private:
  std::vector<typename A::StorageType> _values;
};

/// Margins of half sizes around the centre, and those that the offsets of a kernel need. Throws when one is
/// larger than image::maxStripMargin.
VEXO_API image::StripMargins centredMargins(std::size_t halfX, std::size_t halfY, std::size_t halfZ = 0);
VEXO_API image::StripMargins kernelMargins(const KernelXY& kernel);
VEXO_API image::StripMargins kernelMargins(const KernelXYZ& kernel);

/// An image in strips, as the dispatcher decides to cut it.
class VEXO_API StripCutter {
public:
  using Extent = processor::BaseDynamicSplit::Extent;
  /// To read, and to write. Throws when the image is not in the memory of the host; the error names the
  /// attribute.
  StripCutter(const image::ConstImagePtr& image, image::eStripParsingDirection direction,
              image::eStripAllocationType allocation, const image::StripMargins& margins,
              const std::string& attributeName);
  StripCutter(const image::ImagePtr& image, image::eStripParsingDirection direction,
              image::eStripAllocationType allocation, const std::string& attributeName);

  Extent getExtent() const;
  /// Tells the cut. Strips to read in place keep copies of what other strips write.
  void prepare(const image::StripBounds& bounds);
  boost::shared_ptr<const image::InputStrip> getInput(std::size_t index) const;
  boost::shared_ptr<image::OutputStrip> getOutput(std::size_t index) const;

private:
  image::eStripParsingDirection copiedAxis() const;

  image::ConstImagePtr _image;
  image::ImagePtr _target;  ///< null to read
  image::eStripParsingDirection _direction;
  image::eStripAllocationType _allocation;
  image::StripMargins _margins = {};
  image::StripBounds _bounds;
  boost::shared_ptr<const image::StripMarginCopies> _copies;
};

/// A strip of the image for each run. Img is const image::BaseImage for an attribute that reads strips,
/// image::BaseImage for one that writes them.
template <class P, class Img, class A, image::eStripParsingDirection direction>
class ImageStripSplit : public processor::TargetedSplit<processor::BaseDynamicSplit, P, A> {
public:
  using Extent = typename processor::BaseDynamicSplit::Extent;
  ImageStripSplit(const boost::shared_ptr<Img>& image, image::eStripAllocationType allocation,
                  const image::StripMargins& margins = {})
      : _cutter(makeCutter(image, allocation, margins)) {}

  std::optional<Extent> getExtent() const override { return _cutter.getExtent(); }
  void prepare(const image::StripBounds& bounds) override { _cutter.prepare(bounds); }

protected:
  typename A::StorageType getValue(std::size_t i) const override {
    if constexpr (std::is_const_v<Img>)
      return _cutter.getInput(i);
    else
      return _cutter.getOutput(i);
  }

private:
  static StripCutter makeCutter(const boost::shared_ptr<Img>& image, image::eStripAllocationType allocation,
                                const image::StripMargins& margins) {
    if constexpr (std::is_const_v<Img>)
      return {image, direction, allocation, margins, A::info().name};
    else
      return {image, direction, allocation, A::info().name};
  }

  StripCutter _cutter;
};

// Strips by their usual names, without margins and with those of a kernel.
template <class P, class Img, class A>
using ImageYStrip2dSplit = ImageStripSplit<P, Img, A, image::eStripParsingDirection::Y>;
template <class P, class Img, class A>
using ImageYStrip2dWithKernelSplit = ImageStripSplit<P, Img, A, image::eStripParsingDirection::Y>;
template <class P, class Img, class A>
using ImageXStrip2dSplit = ImageStripSplit<P, Img, A, image::eStripParsingDirection::X>;
template <class P, class Img, class A>
using ImageXStrip2dWithKernelSplit = ImageStripSplit<P, Img, A, image::eStripParsingDirection::X>;
template <class P, class Img, class A>
using ImageYStrip3dSplit = ImageStripSplit<P, Img, A, image::eStripParsingDirection::Y>;
template <class P, class Img, class A>
using ImageYStrip3dWithKernelSplit = ImageStripSplit<P, Img, A, image::eStripParsingDirection::Y>;
template <class P, class Img, class A>
using ImageZStrip3dSplit = ImageStripSplit<P, Img, A, image::eStripParsingDirection::Z>;
template <class P, class Img, class A>
using ImageZStrip3dWithKernelSplit = ImageStripSplit<P, Img, A, image::eStripParsingDirection::Z>;

}  // namespace vexo::imaproc
