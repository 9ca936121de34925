#pragma once

// Windows whose rows are held as lines: one line per row of each slice of the window, loaded once per slice
// of the strip and before the row it could overwrite is written.

#include <stddef.h>

#include "VEXOImage/StripView.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

struct WindowLines {
  const image::StripSource& source;
  ptrdiff_t width, knlX, knlY, knlZ;
  ptrdiff_t lineCount;
  ptrdiff_t lineLength;      ///< samples of a line: those of all windows of a row
  unsigned long long count;  ///< samples of the window

  explicit WindowLines(const image::StripSource& s)
      : source(s),
        width(s.end[0] - s.begin[0]),
        knlX(s.marginBefore[0] + s.marginAfter[0] + 1),
        knlY(s.marginBefore[1] + s.marginAfter[1] + 1),
        knlZ(s.marginBefore[2] + s.marginAfter[2] + 1),
        lineCount(knlY * knlZ),
        lineLength(width + knlX - 1),
        count(static_cast<unsigned long long>(lineCount) * static_cast<unsigned long long>(knlX)) {}

  /// The line that holds row y of slice i of the window.
  ptrdiff_t lineOf(ptrdiff_t y, ptrdiff_t i) const {
    return i * knlY + (y - source.begin[1] + source.marginBefore[1]) % knlY;
  }

  /// For each row of the strip: load(line, x, y, z) for what its window needs and does not have yet,
  /// lineLength samples from x on; then use(y, z).
  template <class Load, class Use>
  void run(Load load, Use use) const {
    const image::StripSource& s = source;
    for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z) {
      const auto loadRows = [&](ptrdiff_t y) {
        for (ptrdiff_t i = 0; i < knlZ; ++i)
          load(lineOf(y, i), s.begin[0] - s.marginBefore[0], y, z - s.marginBefore[2] + i);
      };
      for (ptrdiff_t y = -s.marginBefore[1]; y < s.marginAfter[1]; ++y) loadRows(s.begin[1] + y);
      for (ptrdiff_t y = s.begin[1]; y < s.end[1]; ++y) {
        if (image::isStopped(s)) return;
        loadRows(y + s.marginAfter[1]);
        use(y, z);
      }
    }
  }
};

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
