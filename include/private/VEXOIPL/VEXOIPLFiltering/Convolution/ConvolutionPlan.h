#pragma once

// How the convolution kernels cut a strip into tiles, and what they hold of it at once.

#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionPoints.h"
#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionTaps.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

using imaproc::filter::ConvolutionPoint;
using imaproc::filter::ConvolutionPoints;
using processor::ProcessingInfo;

constexpr ptrdiff_t cacheLineFloats = 64 / sizeof(float);
constexpr ptrdiff_t chunkSize = 1024;  ///< points whose lines are looked up together
constexpr ptrdiff_t maxBatch = 8;
constexpr ptrdiff_t maxSharing = lanesOf<FloatV> == 16 ? 4 : 2;  ///< rows whose sums fit the registers
constexpr ptrdiff_t narrowestTile = 128;
constexpr ptrdiff_t widestTile = 4096;
constexpr ptrdiff_t segmentFloats = 6 * 1024;  ///< stay in the first-level cache
constexpr ptrdiff_t ringFloats = 128 * 1024;   ///< stay in the second-level cache
constexpr ptrdiff_t maxRingFloats = 1024 * 1024;

/// An odd number of cache lines: lines then do not compete for the same places in the cache.
inline ptrdiff_t pitchOf(ptrdiff_t n) {
  return roundUp(n, cacheLineFloats) | cacheLineFloats;
}

inline bool onSameRow(const ConvolutionPoint& a, const ConvolutionPoint& b) {
  return a.offset[1] == b.offset[1] && a.offset[2] == b.offset[2];
}

/// How a strip is cut and what is held of it.
struct Plan {
  const ConvolutionPoints& kernel;
  ptrdiff_t first[3], extent[3];  ///< of the offsets: the smallest, and how many from there to the largest
  ptrdiff_t runs;                 ///< stretches of the list of points that lie on one row
  bool ring;
  int outer, inner;     ///< axes: the ring turns along `outer`; each of its slots holds rows along `inner`
  ptrdiff_t tileWidth;  ///< columns
  ptrdiff_t tileRows;   ///< along the inner axis
  ptrdiff_t pitch;      ///< from line to line of the input
  ptrdiff_t slotLines;  ///< input lines per slot of the ring
  ptrdiff_t slots;
  ptrdiff_t batch;         ///< rows along the outer axis that are computed together,
  ptrdiff_t segmentWidth;  ///< in segments of so many columns
  ptrdiff_t shift;  ///< in the list of points, from each to the same one of the next row; 0 if there is none
  ptrdiff_t sharing;  ///< rows that are summed at once, each line loaded once for all

  explicit Plan(const ProcessingInfo& info)
      : kernel(*static_cast<const ConvolutionPoints*>(info.parameters)) {
    measure(info.inPlace);
    const image::StripSource& s = info.sources[0];
    // Volumes turn the ring along z, unless one slice is all that is read.
    const bool volume = extent[2] > 1;
    outer = volume ? 2 : 1;
    inner = volume ? 1 : 2;
    const ptrdiff_t width = s.end[0] - s.begin[0], length = s.end[outer] - s.begin[outer];
    const ptrdiff_t innerLength = volume ? s.end[1] - s.begin[1] : 1;
    const ptrdiff_t padding = extent[0] - 1;
    // Rows of a batch share most of their input: all but the first read it from the first-level cache.
    const ptrdiff_t useful = larger(extent[outer] / 2, smaller(extent[outer], 3));
    batch =
        larger(1, smaller(smaller(length, maxBatch), smaller(useful, chunkSize / larger(kernel.count, 1))));
    shift = findShift();
    sharing = shift == 0 ? 1 : smaller(smaller(batch, maxSharing), kernel.count / shift);
    slots = extent[outer] + batch - 1;
    segmentWidth = batch == 1 ? widestTile
                              : clamp(segmentFloats / (slots * extent[inner]) / blockWidth * blockWidth,
                                      blockWidth, widestTile);

    const ptrdiff_t widest = clamp(ringFloats / (slots * extent[inner]) - padding, narrowestTile, widestTile);
    setTileWidth(width, widest / blockWidth * blockWidth);
    const ptrdiff_t affordable = ringFloats / (slots * pitch) - (extent[inner] - 1);
    tileRows = clamp(affordable, 1, innerLength);
    slotLines = tileRows + extent[inner] - 1;

    // The ring loads slotLines for tileRows at each of its steps, and starts full.
    const double loads =
        double(slotLines) / double(tileRows) * double(length + extent[outer] - 1) / double(length);
    ring = loads < double(runs) && slots * slotLines <= maxRingFloats / pitch;
    ring = ring || (info.inPlace && (extent[1] > 1 || extent[2] > 1));
    if (ring) return;
    // A row that is written over is read before.
    setTileWidth(width, info.inPlace && runs == 1 ? roundUp(width, blockWidth) : widestTile);
    tileRows = slotLines = 1;
  }

  size_t scratchFloats() const { return size_t((ring ? slots * slotLines : 1) * pitch + sumsFloats()); }
  ptrdiff_t sumsPitch() const { return smaller(segmentWidth, tileWidth); }
  ptrdiff_t sumsFloats() const { return larger(tileWidth, sharing * sumsPitch()); }

private:
  /// In place the offsets count with that of the pixel itself, so that it is loaded before it is written
  /// over.
  void measure(bool inPlace) {
    ptrdiff_t last[3] = {0, 0, 0};
    runs = 0;
    for (int axis = 0; axis < 3; ++axis) first[axis] = 0;
    for (ptrdiff_t i = 0; i < kernel.count; ++i) {
      const ConvolutionPoint& p = kernel.points[i];
      runs += i == 0 || !onSameRow(p, kernel.points[i - 1]);
      for (int axis = 0; axis < 3; ++axis) {
        const bool only = i == 0 && !inPlace;
        first[axis] = only ? p.offset[axis] : smaller(first[axis], p.offset[axis]);
        last[axis] = only ? p.offset[axis] : larger(last[axis], p.offset[axis]);
      }
    }
    for (int axis = 0; axis < 3; ++axis) extent[axis] = last[axis] - first[axis] + 1;
  }
  /// Not 0 when each row of points, along the outer axis, repeats the one before it.
  ptrdiff_t findShift() const {
    const auto repeats = [this](ptrdiff_t from, ptrdiff_t to) {
      const int *a = kernel.points[from].offset, *b = kernel.points[to].offset;
      return b[outer] == a[outer] + 1 && b[inner] == a[inner] && b[0] == a[0];
    };
    ptrdiff_t n = 1;
    while (n < kernel.count && !repeats(0, n)) ++n;
    for (ptrdiff_t i = n; i < kernel.count; ++i)
      if (!repeats(i - n, i)) return 0;
    return n < kernel.count ? n : 0;
  }
  void setTileWidth(ptrdiff_t width, ptrdiff_t widest) {
    tileWidth = roundUp(divideUp(width, divideUp(width, widest)), blockWidth);
    pitch = pitchOf(tileWidth + extent[0] - 1);
  }
};

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
