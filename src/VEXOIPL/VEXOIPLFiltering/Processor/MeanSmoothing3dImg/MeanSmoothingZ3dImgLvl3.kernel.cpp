// Mean along Z, for one strip of slices.
//
// The running sum goes from slice to slice. A whole slice of sums and the slices of the window would fall out
// of the cache, so the strip is run in tiles of columns and rows, each through all slices; a tile still reads
// long pieces of many rows at a time.

#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/Lines.h"
#include "VEXOProcessing/Kernel/RunningSum.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::imaproc::filter {
class MeanSmoothingZ3dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

using processor::ProcessingInfo;

constexpr ptrdiff_t maxWidth = 1024, minWidth = 64;

/// How large the tiles are, so that their lines stay in the second-level cache.
struct Layout {
  ptrdiff_t knlSize, width, rows;

  explicit Layout(const ProcessingInfo& info) {
    const image::StripSource& s = info.sources[0];
    knlSize = s.marginBefore[2] + s.marginAfter[2] + 1;
    width = smaller(s.end[0] - s.begin[0], clamp(maxRingFloats / knlSize, minWidth, maxWidth));
    rows = clamp(maxRingFloats / knlSize / width, 1, s.end[1] - s.begin[1]);
  }
};

size_t scratchSize(const ProcessingInfo& info) {
  const Layout l(info);
  return size_t((l.knlSize + 1) * l.rows + 1) * size_t(l.width) * sizeof(float);
}

void runTile(const ProcessingInfo& info, const Layout& l, ptrdiff_t x, ptrdiff_t y) {
  const image::StripSource& s = info.sources[0];
  const ptrdiff_t width = smaller(l.width, s.end[0] - x), rows = smaller(l.rows, s.end[1] - y);
  const ptrdiff_t tileSize = l.rows * l.width;
  const float inverse = 1.0f / float(l.knlSize);
  float* line = reinterpret_cast<float*>(info.scratch);
  float* sums = line + l.width;
  float* ring = sums + tileSize;
  // A sum less 0 is the same sum: so the first slices enter an empty window.
  clearLine(sums, (l.knlSize + 1) * tileSize);
  ptrdiff_t slot = 0;
  for (ptrdiff_t z = s.begin[2] - s.marginBefore[2]; z < s.end[2] + s.marginAfter[2]; ++z) {
    const ptrdiff_t completed = z - s.marginAfter[2];  // the slice whose window ends here
    for (ptrdiff_t r = 0; r < rows; ++r) {
      info.loaders[0](line, s, x, y + r, z, width);
      float* sum = sums + r * l.width;
      advanceSum(sum, ring + slot * tileSize + r * l.width, line, inverse, width);
      if (completed >= s.begin[2]) info.storers[0](info.targets[0], sum, x, y + r, completed, width);
    }
    slot = slot + 1 == l.knlSize ? 0 : slot + 1;
  }
}

const char* meanSmoothingZ(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  const Layout l(info);
  if (l.knlSize == 1) {  // a running sum would lose small values next to large ones, and carry a NaN along
    convertStrip(StripLines{info}, s, reinterpret_cast<float*>(info.scratch), l.width);
    return nullptr;
  }
  for (ptrdiff_t y = s.begin[1]; y < s.end[1]; y += l.rows)
    for (ptrdiff_t x = s.begin[0]; x < s.end[0] && !image::isStopped(s); x += l.width) runTile(info, l, x, y);
  return nullptr;
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::filter::MeanSmoothingZ3dImgLvl3>::table() {
  static constexpr processor::KernelTable table =
      makeFloatLineTable<eConversion::Wrap>(meanSmoothingZ, scratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
