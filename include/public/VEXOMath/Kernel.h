#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "VEXOCore/BoolResult.h"
#include "VEXOCore/Export.h"

namespace vexo {

struct VEXO_API OffsetXY {
  static constexpr std::size_t axisCount = 2;
  std::int32_t dx, dy;
};
struct VEXO_API OffsetXYZ {
  static constexpr std::size_t axisCount = 3;
  std::int32_t dx, dy, dz;
};

/// How far offsets reach along one axis.
struct KernelReach {
  std::size_t before;  ///< towards smaller coordinates: 0 or the largest negative offset without its sign
  std::size_t after;   ///< towards larger coordinates: 0 or the largest offset
};

/// Weighted neighbours of a pixel, in the order of their insertion. Offsets may occur more than once; a
/// kernel may be empty.
template <class Offset>
class VEXO_API KernelOf {
public:
  struct Point {
    Offset offset;
    float weight;
  };
  using Extent = std::array<KernelReach, Offset::axisCount>;

  void insert(const Offset& offset, float weight) { _points.push_back({offset, weight}); }
  const std::vector<Point>& getPoints() const { return _points; }
  double getWeightSum() const;
  /// One reach per axis, x first.
  Extent getExtent() const;

  /// Same points in the same order; NaN weights are equal to one another.
  bool operator==(const KernelOf& other) const;
  bool operator!=(const KernelOf& other) const { return !(*this == other); }

  /// "dx,dy,w;dx,dy,w" ("dx,dy,dz,w;..." in 3d). Reads back equal.
  std::string toText() const;
  /// Points end at ';' or at the end of a line; blanks and empty points are ignored. On failure the message
  /// names the point, and the kernel is left as it was.
  static BoolResult fromText(const std::string& text, KernelOf& kernel);

private:
  std::vector<Point> _points;
};

extern template class KernelOf<OffsetXY>;
extern template class KernelOf<OffsetXYZ>;

class KernelXY : public KernelOf<OffsetXY> {};
class KernelXYZ : public KernelOf<OffsetXYZ> {};

}  // namespace vexo
