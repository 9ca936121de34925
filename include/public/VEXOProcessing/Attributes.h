#pragma once

// The parameters that filters share. A parameter class is its name, its type and its tool tip; direction and
// optionality follow from the name.

#include <cstdint>

#include "VEXOProcessing/Attribute.h"

namespace vexo::imaproc::attr {

/// Images of first-level processors.
struct InImg : processor::InputImageAttribute<InImg> {
  static constexpr char toolTip[] = "Image to process; 2d filters process each of its planes on its own";
};
struct OutImg : processor::OutputImageAttribute<OutImg> {
  static constexpr char toolTip[] = "Result; created when not given";
};
struct InImg3d : processor::InputImageAttribute<InImg3d> {
  static constexpr char toolTip[] = "Image to process; each of its volumes is processed on its own";
};
struct InImg1 : processor::InputImageAttribute<InImg1> {
  static constexpr char toolTip[] = "First image";
};
struct InImg2 : processor::InputImageAttribute<InImg2> {
  static constexpr char toolTip[] = "Second image";
};
struct InImg3d1 : processor::InputImageAttribute<InImg3d1> {
  static constexpr char toolTip[] = "First image; each of its volumes is processed on its own";
};
struct InImg3d2 : processor::InputImageAttribute<InImg3d2> {
  static constexpr char toolTip[] = "Second image; each of its volumes is processed on its own";
};
struct OutRealImg : processor::OutputImageAttribute<OutRealImg> {
  static constexpr char toolTip[] = "32-bit float result; created when not given";
};
struct InMaskImg : processor::InputImageAttribute<InMaskImg> {
  static constexpr char toolTip[] =
      "8-bit mask of the same size: only samples whose mask is not 0 are processed";
};
struct InBinImg3d : processor::InputImageAttribute<InBinImg3d> {
  static constexpr char toolTip[] =
      "8-bit mask of the same size: only samples whose mask is not 0 are processed";
};
/// Marks an image that holds intermediate values of a run, as its name does: "Wk" after the direction. A
/// level hands none to the next.
struct WorkImage {};
struct OutOptWk1RealGpuImg : processor::OutputImageAttribute<OutOptWk1RealGpuImg>, WorkImage {
  static constexpr char toolTip[] = "32-bit float work image on the GPU";
};

/// Half kernel sizes: a kernel of half size h spans 2 h + 1 samples.
template <class Derived>
struct HalfKnlSize : processor::Attribute<Derived, std::uint32_t> {
  static BoolResult check(std::uint32_t value) {
    if (value <= image::maxStripMargin) return true;
    return BoolResult::failure(std::to_string(value) + " is over the largest half kernel size, " +
                               std::to_string(image::maxStripMargin));
  }
};
struct InHalfKnlSizeX : HalfKnlSize<InHalfKnlSizeX> {
  static constexpr char toolTip[] = "Half size of the kernel along X: it spans 2 * value + 1 columns";
};
struct InHalfKnlSizeY : HalfKnlSize<InHalfKnlSizeY> {
  static constexpr char toolTip[] = "Half size of the kernel along Y: it spans 2 * value + 1 rows";
};
struct InHalfKnlSizeZ : HalfKnlSize<InHalfKnlSizeZ> {
  static constexpr char toolTip[] = "Half size of the kernel along Z: it spans 2 * value + 1 slices";
};

/// Pieces handed to second-level processors.
struct InSubImg2d : processor::InputImageAttribute<InSubImg2d> {
  static constexpr char toolTip[] = "One plane of the image to process";
};

struct InSubImg3d : processor::InputImageAttribute<InSubImg3d> {
  static constexpr char toolTip[] = "One volume of the image to process";
};
struct InSubImg2d1 : processor::InputImageAttribute<InSubImg2d1> {
  static constexpr char toolTip[] = "One plane of the first image";
};
struct InSubImg2d2 : processor::InputImageAttribute<InSubImg2d2> {
  static constexpr char toolTip[] = "One plane of the second image";
};
struct InSubImg3d1 : processor::InputImageAttribute<InSubImg3d1> {
  static constexpr char toolTip[] = "One volume of the first image";
};
struct InSubImg3d2 : processor::InputImageAttribute<InSubImg3d2> {
  static constexpr char toolTip[] = "One volume of the second image";
};
struct InSubMaskImg2d : processor::InputImageAttribute<InSubMaskImg2d> {
  static constexpr char toolTip[] = "One plane of the mask";
};
struct InSubBinImg3d : processor::InputImageAttribute<InSubBinImg3d> {
  static constexpr char toolTip[] = "One volume of the mask";
};
struct InSubGpuImg : processor::InputImageAttribute<InSubGpuImg> {
  static constexpr char toolTip[] = "One plane or volume to process, on the GPU";
};

/// Pieces handed to third-level processors.
struct InKnlZStrip3d : processor::InputStripAttribute<InKnlZStrip3d> {
  static constexpr char toolTip[] = "Band of slices to process, with kernel margins";
};
struct OutZStrip3d : processor::OutputStripAttribute<OutZStrip3d> {
  static constexpr char toolTip[] = "Band of slices that receives the result";
};
struct InBinKnlYStrip2d : processor::InputStripAttribute<InBinKnlYStrip2d> {
  static constexpr char toolTip[] = "Band of rows of the mask, with kernel margins";
};
struct InBinKnlZStrip3d : processor::InputStripAttribute<InBinKnlZStrip3d> {
  static constexpr char toolTip[] = "Band of slices of the mask, with kernel margins";
};
struct InKnlYStrip2d : processor::InputStripAttribute<InKnlYStrip2d> {
  static constexpr char toolTip[] = "Band of rows to process, with kernel margins";
};
struct OutYStrip2d : processor::OutputStripAttribute<OutYStrip2d> {
  static constexpr char toolTip[] = "Band of rows that receives the result";
};
struct InKnlXStrip2d : processor::InputStripAttribute<InKnlXStrip2d> {
  static constexpr char toolTip[] = "Band of columns to process, with kernel margins";
};
struct OutXStrip2d : processor::OutputStripAttribute<OutXStrip2d> {
  static constexpr char toolTip[] = "Band of columns that receives the result";
};
struct InYStrip2d : processor::InputStripAttribute<InYStrip2d> {
  static constexpr char toolTip[] = "Band of rows to process";
};
struct InZStrip3d : processor::InputStripAttribute<InZStrip3d> {
  static constexpr char toolTip[] = "Band of slices to process";
};
struct InYStrip2d1 : processor::InputStripAttribute<InYStrip2d1> {
  static constexpr char toolTip[] = "Band of rows of the first image";
};
struct InYStrip2d2 : processor::InputStripAttribute<InYStrip2d2> {
  static constexpr char toolTip[] = "Band of rows of the second image";
};
struct InMaskYStrip2d : processor::InputStripAttribute<InMaskYStrip2d> {
  static constexpr char toolTip[] = "Band of rows of the mask";
};
struct InZStrip3d1 : processor::InputStripAttribute<InZStrip3d1> {
  static constexpr char toolTip[] = "Band of slices of the first image";
};
struct InZStrip3d2 : processor::InputStripAttribute<InZStrip3d2> {
  static constexpr char toolTip[] = "Band of slices of the second image";
};
struct InMaskZStrip3d : processor::InputStripAttribute<InMaskZStrip3d> {
  static constexpr char toolTip[] = "Band of slices of the mask";
};

}  // namespace vexo::imaproc::attr
