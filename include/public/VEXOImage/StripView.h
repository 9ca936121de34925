#pragma once

// What a kernel sees of a strip: plain data and a few functions with internal linkage. This header is read by
// kernel sources, so nothing here may need the standard library at run time.

#include <stddef.h>

namespace vexo::image {

enum class eBorder { Mirror, Replicate, Circular, Constant };

/// The index inside [0, n) that an index outside it stands for; -1 when it stands for the constant. Out of
/// line: in every loader it would be most of the code.
[[gnu::noinline]] static inline ptrdiff_t mapOutsideIndex(eBorder border, ptrdiff_t i, ptrdiff_t n) {
  switch (border) {
    case eBorder::Replicate:
      return i < 0 ? 0 : n - 1;
    case eBorder::Circular: {
      const ptrdiff_t m = i % n;
      return m < 0 ? m + n : m;
    }
    case eBorder::Constant:
      return -1;
    case eBorder::Mirror:
      break;
  }
  ptrdiff_t m = i % (2 * n);
  if (m < 0) m += 2 * n;
  return m < n ? m : 2 * n - 1 - m;
}
static inline ptrdiff_t mapBorderIndex(eBorder border, ptrdiff_t i, ptrdiff_t n) {
  return i >= 0 && i < n ? i : mapOutsideIndex(border, i, n);
}

/// A strip that is read: the part [begin, end) of an image, per axis X, Y, Z, and margins around it.
/// Positions are those of the image; positions in the margins may lie outside of it.
struct StripSource {
  const unsigned char* image;  ///< sample (0, 0, 0)
  ptrdiff_t rowStride, sliceStride;
  ptrdiff_t size[3];
  ptrdiff_t begin[3], end[3];
  ptrdiff_t marginBefore[3], marginAfter[3];
  int sampleSize;
  eBorder border;
  unsigned char constant[4];  ///< the constant of the border, as a sample of the image

  /// When the image is also written, positions on one axis that lie outside [begin, end) are read from copies
  /// that were taken before the first strip ran: position p of the image is position savedPosition[p] of the
  /// copy. Null otherwise.
  const unsigned char* saved;
  const ptrdiff_t* savedPosition;
  ptrdiff_t savedRowStride, savedSliceStride;
  int savedAxis;

  const unsigned char* stop;  ///< not 0 once the run is to end; null where nobody asks
};

/// Whether the run is to end: kernels look once a line, or a few, and leave the rest of the strip as it is.
static inline bool isStopped(const StripSource& s) {
  return s.stop && __atomic_load_n(s.stop, __ATOMIC_RELAXED) != 0;
}

/// A strip that is written.
struct StripTarget {
  unsigned char* data;  ///< the sample at (begin[0], begin[1], begin[2])
  ptrdiff_t rowStride, sliceStride;
  ptrdiff_t begin[3], end[3];
  int sampleSize;
  bool
      streamed;  ///< so large that the caches lose it before it is read again: lines may be written past them
};

/// Address at which column 0 of the row (y, z) lies, the border applied to y and z; null when the row is
/// constant. Columns [0, size[0]) may be read there, or, when a strip cut along X has copies, [begin[0],
/// end[0]).
static inline const unsigned char* sourceRow(const StripSource& s, ptrdiff_t y, ptrdiff_t z) {
  const bool savedY = s.saved && s.savedAxis == 1 && (y < s.begin[1] || y >= s.end[1]);
  const bool savedZ = s.saved && s.savedAxis == 2 && (z < s.begin[2] || z >= s.end[2]);
  y = mapBorderIndex(s.border, y, s.size[1]);
  z = mapBorderIndex(s.border, z, s.size[2]);
  if (y < 0 || z < 0) return nullptr;
  if (savedY) return s.saved + s.savedPosition[y] * s.savedRowStride + z * s.savedSliceStride;
  if (savedZ) return s.saved + y * s.savedRowStride + s.savedPosition[z] * s.savedSliceStride;
  return s.image + y * s.rowStride + z * s.sliceStride;
}

/// Address of the sample x of the row (y, z), which lies at `row`, the border applied to all three; null when
/// it is the constant.
static inline const unsigned char* sourceSample(const StripSource& s, const unsigned char* row, ptrdiff_t x,
                                                ptrdiff_t y, ptrdiff_t z) {
  const bool savedX = s.saved && s.savedAxis == 0 && (x < s.begin[0] || x >= s.end[0]);
  x = mapBorderIndex(s.border, x, s.size[0]);
  if (!row || x < 0) return nullptr;
  if (!savedX) return row + x * s.sampleSize;
  y = mapBorderIndex(s.border, y, s.size[1]);
  z = mapBorderIndex(s.border, z, s.size[2]);
  return s.saved + y * s.savedRowStride + z * s.savedSliceStride + s.savedPosition[x] * s.sampleSize;
}
static inline const unsigned char* sourceSample(const StripSource& s, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z) {
  return sourceSample(s, sourceRow(s, y, z), x, y, z);
}

/// Address of the first column of a row of the target.
static inline unsigned char* targetRow(const StripTarget& t, ptrdiff_t y, ptrdiff_t z) {
  return t.data + (y - t.begin[1]) * t.rowStride + (z - t.begin[2]) * t.sliceStride;
}

}  // namespace vexo::image
