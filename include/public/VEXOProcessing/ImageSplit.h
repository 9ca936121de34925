#pragma once

#include <algorithm>

#include "VEXOMath/Kernel.h"
#include "VEXOProcessing/Split.h"

namespace vexo::imaproc {

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
  SubImageSplit(const Handle& image, eSubImageSplitType type) {
    initBase(type,
             type == eSubImageSplitType::Plane2d ? eVolumeParsingType::SliceBySlice
                                                 : eVolumeParsingType::WholeVolume,
             eColorParsingType::ChannelByChannel, eTemporalParsingType::FrameByFrame, image);
  }
  std::optional<std::size_t> getPieceCount() const override { return getSubImageCount(); }

protected:
  Handle getValue(std::size_t pieceIndex) const override {
    // The handle that was given decides whether the pieces may be written.
    return boost::const_pointer_cast<typename Handle::element_type>(this->getSubImage(pieceIndex));
  }
};
template <class P, class A>
boost::shared_ptr<SubImageSplit<P, A>> planeSplit(const typename A::StorageType& image) {
  return boost::make_shared<SubImageSplit<P, A>>(image, eSubImageSplitType::Plane2d);
}
template <class P, class A>
boost::shared_ptr<SubImageSplit<P, A>> volumeSplit(const typename A::StorageType& image) {
  return boost::make_shared<SubImageSplit<P, A>>(image, eSubImageSplitType::Volume3d);
}

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

/// A strip of the image for each run. Img is const image::BaseImage for an attribute that reads strips,
/// image::BaseImage for one that writes them.
template <class P, class Img, class A, image::eStripParsingDirection direction>
class ImageStripSplit : public processor::TargetedSplit<processor::BaseDynamicSplit, P, A> {
public:
  using Extent = typename processor::BaseDynamicSplit::Extent;
  ImageStripSplit(boost::shared_ptr<Img> image, image::eStripAllocationType allocation,
                  const image::StripMargins& margins = {})
      : _image(std::move(image)), _allocation(allocation), _margins(margins) {
    image::hostImage(boost::shared_ptr<const image::BaseImage>(_image), A::info().name.c_str());
  }

  std::optional<Extent> getExtent() const override {
    constexpr int axis = static_cast<int>(direction);
    return Extent{{_image->getSizeX(), _image->getSizeY(), _image->getSizeZ()},
                  direction,
                  std::max(_margins.before[axis], _margins.after[axis])};
  }
  void prepare(const image::StripBounds& bounds) override {
    _bounds = bounds;
    if constexpr (std::is_const_v<Img>) {
      if (_allocation != image::eStripAllocationType::OwnBuffer) return;
      const auto& host = image::hostImage(boost::shared_ptr<const image::BaseImage>(_image), "input strip");
      const auto axis = copiedAxis();
      const std::size_t size =
          axis == image::eStripParsingDirection::Y ? _image->getSizeY() : _image->getSizeZ();
      _copies = image::StripMarginCopies::create(
          host, axis, axis == direction ? bounds : image::StripBounds{0, size}, _margins);
    }
  }

protected:
  typename A::StorageType getValue(std::size_t i) const override {
    if constexpr (std::is_const_v<Img>)
      return boost::make_shared<image::InputStrip>(_image, direction, _bounds[i], _bounds[i + 1], _margins,
                                                   _copies);
    else
      return boost::make_shared<image::OutputStrip>(_image, direction, _bounds[i], _bounds[i + 1],
                                                    _allocation);
  }

private:
  /// Where strips read what is written: beyond the cut; or, for a kernel along Y or Z that runs within its
  /// strip, at the ends of that axis, where the border sends it back into the image. Along X a row is loaded
  /// as a whole.
  image::eStripParsingDirection copiedAxis() const {
    const auto reach = [this](int axis) { return std::max(_margins.before[axis], _margins.after[axis]); };
    if (reach(static_cast<int>(direction)) == 0 && reach(0) == 0) {
      if (reach(1) > 0 && reach(2) == 0) return image::eStripParsingDirection::Y;
      if (reach(2) > 0 && reach(1) == 0) return image::eStripParsingDirection::Z;
    }
    return direction;
  }

  boost::shared_ptr<Img> _image;
  image::eStripAllocationType _allocation;
  image::StripMargins _margins;
  image::StripBounds _bounds;
  boost::shared_ptr<const image::StripMarginCopies> _copies;
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
