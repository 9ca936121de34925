#pragma once

// The parameters that filters share. A parameter class is its name, its type and its tool tip; direction and
// optionality follow from the name.

#include <cstdint>

#include "VEXOProcessing/Attribute.h"

namespace vexo::imaproc::attr {

/// Images of first-level processors.
class InImg : public processor::InputImageAttribute<InImg> {
public:
  static constexpr char toolTip[] = "Image to process; each of its planes is processed on its own";
};
class OutImg : public processor::OutputImageAttribute<OutImg> {
public:
  static constexpr char toolTip[] = "Result; created when not given";
};
class OutOptWk1RealGpuImg : public processor::OutputImageAttribute<OutOptWk1RealGpuImg> {
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

/// Pieces handed to second-level processors.
class InSubImg2d : public processor::InputImageAttribute<InSubImg2d> {
public:
  static constexpr char toolTip[] = "One plane of the image to process";
};

/// Pieces handed to third-level processors.
class InKnlYStrip2d : public processor::InputStripAttribute<InKnlYStrip2d> {
public:
  static constexpr char toolTip[] = "Band of rows to process, with kernel margins";
};
class OutYStrip2d : public processor::OutputStripAttribute<OutYStrip2d> {
public:
  static constexpr char toolTip[] = "Band of rows that receives the result";
};

}  // namespace vexo::imaproc::attr
