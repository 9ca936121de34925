#pragma once

// The parameters that filters share. A parameter class is its name, its type and its tool tip; direction and
// optionality follow from the name.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "VEXOMath/Kernel.h"
#include "VEXOProcessing/Attribute.h"

namespace vexo::imaproc::attr {

/// Images of first-level processors.
class InImg : public processor::InputImageAttribute<InImg> {
public:
  static constexpr char toolTip[] = "Image to process; 2d filters process each of its planes on its own";
};
class OutImg : public processor::OutputImageAttribute<OutImg> {
public:
  static constexpr char toolTip[] = "Result; created when not given";
};
class InImg3d : public processor::InputImageAttribute<InImg3d> {
public:
  static constexpr char toolTip[] = "Image to process; each of its volumes is processed on its own";
};
class InImg1 : public processor::InputImageAttribute<InImg1> {
public:
  static constexpr char toolTip[] = "First image";
};
class InImg2 : public processor::InputImageAttribute<InImg2> {
public:
  static constexpr char toolTip[] = "Second image";
};
class InImg3d1 : public processor::InputImageAttribute<InImg3d1> {
public:
  static constexpr char toolTip[] = "First image; each of its volumes is processed on its own";
};
class InImg3d2 : public processor::InputImageAttribute<InImg3d2> {
public:
  static constexpr char toolTip[] = "Second image; each of its volumes is processed on its own";
};
class OutRealImg : public processor::OutputImageAttribute<OutRealImg> {
public:
  static constexpr char toolTip[] = "32-bit float result; created when not given";
};
class InMaskImg : public processor::InputImageAttribute<InMaskImg> {
public:
  static constexpr char toolTip[] =
      "8-bit mask of the same size: only samples whose mask is not 0 are processed";
};
class InBinImg3d : public processor::InputImageAttribute<InBinImg3d> {
public:
  static constexpr char toolTip[] =
      "8-bit mask of the same size: only samples whose mask is not 0 are processed";
};
/// Marks an image that holds intermediate values of a run.
struct WorkImage {};
class OutOptWk1RealGpuImg : public processor::OutputImageAttribute<OutOptWk1RealGpuImg>, public WorkImage {
public:
  static constexpr char toolTip[] = "32-bit float work image on the GPU";
};

/// Half kernel sizes: a kernel of half size h spans 2 h + 1 samples.
template <class Derived>
class HalfKnlSize : public processor::Attribute<Derived, std::uint32_t> {
public:
  static BoolResult check(std::uint32_t value) {
    if (value <= image::maxStripMargin) return true;
    return BoolResult::failure(std::to_string(value) + " is over the largest half kernel size, " +
                               std::to_string(image::maxStripMargin));
  }
};
class InHalfKnlSizeX : public HalfKnlSize<InHalfKnlSizeX> {
public:
  static constexpr char toolTip[] = "Half size of the kernel along X: it spans 2 * value + 1 columns";
};
class InHalfKnlSizeY : public HalfKnlSize<InHalfKnlSizeY> {
public:
  static constexpr char toolTip[] = "Half size of the kernel along Y: it spans 2 * value + 1 rows";
};
class InHalfKnlSizeZ : public HalfKnlSize<InHalfKnlSizeZ> {
public:
  static constexpr char toolTip[] = "Half size of the kernel along Z: it spans 2 * value + 1 slices";
};

/// Convolution kernels: offsets reach as far as half kernel sizes.
template <class Derived, class Kernel>
class ConvolutionKnl : public processor::Attribute<Derived, boost::shared_ptr<const Kernel>> {
public:
  static BoolResult check(const boost::shared_ptr<const Kernel>& kernel) {
    if (kernel)
      for (const KernelReach& reach : kernel->getExtent())
        if (std::max(reach.before, reach.after) > image::maxStripMargin)
          return BoolResult::failure("it reaches " + std::to_string(std::max(reach.before, reach.after)) +
                                     " samples along an axis, more than " +
                                     std::to_string(image::maxStripMargin));
    return true;
  }
};
class InKnlXY : public ConvolutionKnl<InKnlXY, KernelXY> {
public:
  static constexpr char toolTip[] = "Kernel: offsets in pixels with their weights";
};
class InKnlXYZ : public ConvolutionKnl<InKnlXYZ, KernelXYZ> {
public:
  static constexpr char toolTip[] = "Kernel: offsets in voxels with their weights";
};
class InNormalize : public processor::Attribute<InNormalize, bool> {
public:
  static constexpr char toolTip[] = "Divide by the sum of the weights, unless that is nearly 0";
};
/// Border policies: the constant of a constant border is a number.
template <class Derived, class Policy>
class ConvolBorder : public processor::Attribute<Derived, boost::shared_ptr<const Policy>> {
public:
  static BoolResult check(const boost::shared_ptr<const Policy>& border) {
    return border ? processor::checkFinite(border->getConstant()) : true;
  }
};
class InConvolBorder2d : public ConvolBorder<InConvolBorder2d, image::Border2dPolicy> {
public:
  static constexpr char toolTip[] = "How pixels outside the image are obtained";
};
class InConvolBorder3d : public ConvolBorder<InConvolBorder3d, image::Border3dPolicy> {
public:
  static constexpr char toolTip[] = "How voxels outside the image are obtained";
};
class InOptConvolBorder2d : public ConvolBorder<InOptConvolBorder2d, image::Border2dPolicy> {
public:
  static constexpr char toolTip[] = "How pixels outside the image are obtained";
  static StorageType defaultValue() { return image::mirorBorder2d(); }
};
class InOptConvolBorder3d : public ConvolBorder<InOptConvolBorder3d, image::Border3dPolicy> {
public:
  static constexpr char toolTip[] = "How voxels outside the image are obtained";
  static StorageType defaultValue() { return image::mirorBorder3d(); }
};

/// Despeckle.
class InFactor : public processor::Attribute<InFactor, double> {
public:
  static constexpr char toolTip[] =
      "A pixel is replaced when this times its distance from the neighbours' mean exceeds their deviation";
  static BoolResult check(double value) { return processor::checkFinite(value); }
};

/// Histogram medians.
class Range : public BaseDataItemNode {
public:
  Range(double minimumValue = 0, double maximumValue = 0)
      : BaseDataItemNode("Range", "An interval of sample values") {
    add(minimum);
    add(maximum);
    minimum.setValue(minimumValue);
    maximum.setValue(maximumValue);
  }
  bool needsAllLeaves() const override { return true; }
  DataItemLeaf<double> minimum{"minimum", "Lowest value of the interval"};
  DataItemLeaf<double> maximum{"maximum", "Highest value of the interval, which belongs to it"};
};
class InInputRange : public processor::Attribute<InInputRange, boost::shared_ptr<const Range>> {
public:
  static constexpr char toolTip[] = "Range of the input's samples, for which the 256 levels are chosen";
  static BoolResult check(const boost::shared_ptr<const Range>& range) {
    if (!range) return true;
    for (const auto* bound : {&range->minimum, &range->maximum})
      if (const BoolResult finite = processor::checkFinite(bound->getValue()); !finite)
        return BoolResult::failure(bound->getKey() + ": " + finite.getMessage());
    if (range->minimum.getValue() <= range->maximum.getValue()) return true;
    return BoolResult::failure(dataItemToText(*range) + " is reversed");
  }
};

/// Median: whether 256 levels may stand for the input's samples, and, after a run, whether they had to.
class InOutOptAllow8bitsCompression : public processor::Attribute<InOutOptAllow8bitsCompression, bool> {
public:
  static constexpr char toolTip[] =
      "Whether the result may be as coarse as 256 levels over the range of the image, which is fast";
  static bool defaultValue() { return false; }
};

/// Bilateral filters.
class InSpaceSigma : public processor::Attribute<InSpaceSigma, double> {
public:
  static constexpr char toolTip[] = "Standard deviation of the weights by distance, in pixels";
};
class InRangeSigma : public processor::Attribute<InRangeSigma, double> {
public:
  static constexpr char toolTip[] =
      "Standard deviation of the weights by difference in value, in grey levels";
};
class InOptHalfKnlSize : public HalfKnlSize<InOptHalfKnlSize> {
public:
  static constexpr char toolTip[] =
      "Half size of the window along each axis: it spans 2 * value + 1 samples; 0: 1.5 times InSpaceSigma";
  static std::uint32_t defaultValue() { return 0; }
};
class InHalfKnlSize : public HalfKnlSize<InHalfKnlSize> {
public:
  static constexpr char toolTip[] = "Half size of the window along each axis: it spans 2 * value + 1 samples";
};
class InScaleFactor : public processor::Attribute<InScaleFactor, double> {
public:
  static constexpr char toolTip[] = "Bins of the range weights per grey level";
};
using Floats = std::vector<float>;
class InTabulatedSpaceExponentials
    : public processor::Attribute<InTabulatedSpaceExponentials, boost::shared_ptr<const Floats>> {
public:
  static constexpr char toolTip[] = "Weight of each place of the window";
};
class InTabulatedRangeExponentials
    : public processor::Attribute<InTabulatedRangeExponentials, boost::shared_ptr<const Floats>> {
public:
  static constexpr char toolTip[] = "Weight of each bin of differences in value";
};

/// Gaussian smoothing: standard deviations in samples.
template <class Derived>
class StdDev : public processor::Attribute<Derived, float> {
public:
  static BoolResult check(float value) {
    const BoolResult finite = processor::checkFinite(value);
    if (!finite || value >= 0) return finite;
    return BoolResult::failure(ScalarText<float>::toText(value) + " is negative");
  }
};
class InStdDevX : public StdDev<InStdDevX> {
public:
  static constexpr char toolTip[] = "Standard deviation along X, in pixels; 0 leaves this axis as it is";
};
class InStdDevY : public StdDev<InStdDevY> {
public:
  static constexpr char toolTip[] = "Standard deviation along Y, in pixels; 0 leaves this axis as it is";
};
class InStdDevZ : public StdDev<InStdDevZ> {
public:
  static constexpr char toolTip[] = "Standard deviation along Z, in slices; 0 leaves this axis as it is";
};

/// How much of a Gaussian its kernel covers.
class GaussianCoverage : public BaseDataItemNode {
public:
  GaussianCoverage(float coverageValue = 0.997f, std::uint32_t maxHalf = 0)
      : BaseDataItemNode("GaussianCoverage", "How much of a Gaussian its kernel covers") {
    add(coverage);
    add(maxHalfKnlSize);
    coverage.setValue(coverageValue);
    maxHalfKnlSize.setValue(maxHalf);
  }
  /// In ]0, 1[.
  DataItemLeaf<float> coverage{"coverage",
                               "Part of the area under the Gaussian that the kernel covers, in ]0, 1["};
  DataItemLeaf<std::uint32_t> maxHalfKnlSize{"maxHalfKnlSize",
                                             "Largest half size of the kernel; 0 sets no limit"};
};
class InOptSmoothingGaussianCoverage
    : public processor::Attribute<InOptSmoothingGaussianCoverage, boost::shared_ptr<const GaussianCoverage>> {
public:
  static constexpr char toolTip[] = "How much of the Gaussian the kernel covers";
  static StorageType defaultValue() {
    static const auto& item = *new StorageType(boost::make_shared<const GaussianCoverage>());
    return item;
  }
  static BoolResult check(const StorageType& item) {
    const float coverage = item ? item->coverage.getValue() : 0.5f;
    if (coverage > 0 && coverage < 1) return true;  // comparisons with NaN are false
    return BoolResult::failure("coverage: " + item->coverage.getText() + " is not in ]0, 1[");
  }
};

/// Pieces handed to second-level processors.
class InSubImg2d : public processor::InputImageAttribute<InSubImg2d> {
public:
  static constexpr char toolTip[] = "One plane of the image to process";
};

class InSubImg3d : public processor::InputImageAttribute<InSubImg3d> {
public:
  static constexpr char toolTip[] = "One volume of the image to process";
};
class InSubImg2d1 : public processor::InputImageAttribute<InSubImg2d1> {
public:
  static constexpr char toolTip[] = "One plane of the first image";
};
class InSubImg2d2 : public processor::InputImageAttribute<InSubImg2d2> {
public:
  static constexpr char toolTip[] = "One plane of the second image";
};
class InSubImg3d1 : public processor::InputImageAttribute<InSubImg3d1> {
public:
  static constexpr char toolTip[] = "One volume of the first image";
};
class InSubImg3d2 : public processor::InputImageAttribute<InSubImg3d2> {
public:
  static constexpr char toolTip[] = "One volume of the second image";
};
class InSubMaskImg2d : public processor::InputImageAttribute<InSubMaskImg2d> {
public:
  static constexpr char toolTip[] = "One plane of the mask";
};
class InSubBinImg3d : public processor::InputImageAttribute<InSubBinImg3d> {
public:
  static constexpr char toolTip[] = "One volume of the mask";
};
class InSubGpuImg : public processor::InputImageAttribute<InSubGpuImg> {
public:
  static constexpr char toolTip[] = "One plane or volume to process, on the GPU";
};

/// Pieces handed to third-level processors.
class InKnlZStrip3d : public processor::InputStripAttribute<InKnlZStrip3d> {
public:
  static constexpr char toolTip[] = "Band of slices to process, with kernel margins";
};
class OutZStrip3d : public processor::OutputStripAttribute<OutZStrip3d> {
public:
  static constexpr char toolTip[] = "Band of slices that receives the result";
};
class InBinKnlYStrip2d : public processor::InputStripAttribute<InBinKnlYStrip2d> {
public:
  static constexpr char toolTip[] = "Band of rows of the mask, with kernel margins";
};
class InBinKnlZStrip3d : public processor::InputStripAttribute<InBinKnlZStrip3d> {
public:
  static constexpr char toolTip[] = "Band of slices of the mask, with kernel margins";
};
class InKnlYStrip2d : public processor::InputStripAttribute<InKnlYStrip2d> {
public:
  static constexpr char toolTip[] = "Band of rows to process, with kernel margins";
};
class OutYStrip2d : public processor::OutputStripAttribute<OutYStrip2d> {
public:
  static constexpr char toolTip[] = "Band of rows that receives the result";
};
class InKnlXStrip2d : public processor::InputStripAttribute<InKnlXStrip2d> {
public:
  static constexpr char toolTip[] = "Band of columns to process, with kernel margins";
};
class OutXStrip2d : public processor::OutputStripAttribute<OutXStrip2d> {
public:
  static constexpr char toolTip[] = "Band of columns that receives the result";
};
class InYStrip2d : public processor::InputStripAttribute<InYStrip2d> {
public:
  static constexpr char toolTip[] = "Band of rows to process";
};
class InZStrip3d : public processor::InputStripAttribute<InZStrip3d> {
public:
  static constexpr char toolTip[] = "Band of slices to process";
};
class InYStrip2d1 : public processor::InputStripAttribute<InYStrip2d1> {
public:
  static constexpr char toolTip[] = "Band of rows of the first image";
};
class InYStrip2d2 : public processor::InputStripAttribute<InYStrip2d2> {
public:
  static constexpr char toolTip[] = "Band of rows of the second image";
};
class InMaskYStrip2d : public processor::InputStripAttribute<InMaskYStrip2d> {
public:
  static constexpr char toolTip[] = "Band of rows of the mask";
};
class InZStrip3d1 : public processor::InputStripAttribute<InZStrip3d1> {
public:
  static constexpr char toolTip[] = "Band of slices of the first image";
};
class InZStrip3d2 : public processor::InputStripAttribute<InZStrip3d2> {
public:
  static constexpr char toolTip[] = "Band of slices of the second image";
};
class InMaskZStrip3d : public processor::InputStripAttribute<InMaskZStrip3d> {
public:
  static constexpr char toolTip[] = "Band of slices of the mask";
};

}  // namespace vexo::imaproc::attr
