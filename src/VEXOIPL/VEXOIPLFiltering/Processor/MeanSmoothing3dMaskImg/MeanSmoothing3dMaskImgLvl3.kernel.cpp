// Masked mean over a window, for one strip of slices.
//
// The sums and numbers over the window of each slice are those of the masked mean of planes. Along Z they are
// running sums again, over tiles of columns and rows that run through all slices, because the sums of whole
// slices would fall out of the cache.

#include "VEXOIPL/VEXOIPLFiltering/MeanSmoothing/MaskedSums.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::imaproc::filter {
class MeanSmoothing3dMaskImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

using processor::ProcessingInfo;

constexpr ptrdiff_t maxSliceRing = 256 * 1024;  ///< samples
constexpr ptrdiff_t maxWidth = 256, usualRows = 32;

/// The tiles, in samples.
struct Layout {
  ptrdiff_t knlSizeZ, width, rows;

  explicit Layout(const image::StripSource& s) {
    knlSizeZ = s.marginBefore[2] + s.marginAfter[2] + 1;
    width = clamp(maxSliceRing / knlSizeZ / usualRows, cacheLineFloats, maxWidth);
    width = smaller(width, s.end[0] - s.begin[0]);
    rows = clamp(maxSliceRing / knlSizeZ / width, 1, s.end[1] - s.begin[1]);
  }
  ptrdiff_t tileSize() const { return roundUp(width * rows, cacheLineFloats); }
  /// The lines of a SliceSink.
  ptrdiff_t sinkBytes() const {
    return (2 * (knlSizeZ + 1) * tileSize() + roundUp(width, cacheLineFloats)) * ptrdiff_t(sizeof(float));
  }
};

image::StripSource makePart(const image::StripSource& s, const Layout& l, ptrdiff_t x, ptrdiff_t y) {
  image::StripSource part = s;
  part.begin[0] = x;
  part.end[0] = smaller(x + l.width, s.end[0]);
  part.begin[1] = y;
  part.end[1] = smaller(y + l.rows, s.end[1]);
  return part;
}

size_t scratchSize(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  const Layout l(s);
  return size_t(l.sinkBytes() + MaskedSums::scratchBytes(makePart(s, l, s.begin[0], s.begin[1])));
}

/// Takes the sums of one slice after the other.
struct SliceSink {
  const ProcessingInfo& info;
  const image::StripSource& part;
  ptrdiff_t width, tileSize, knlSizeZ;
  ptrdiff_t slot = 0;  ///< of the ring: the slice that leaves the window
  float *means, *sums, *ring;
  unsigned *counts, *countRing;

  SliceSink(const ProcessingInfo& info, const image::StripSource& part, const Layout& l)
      : info(info), part(part), width(l.width), tileSize(l.tileSize()), knlSizeZ(l.knlSizeZ) {
    sums = reinterpret_cast<float*>(info.scratch);
    ring = sums + tileSize;
    counts = reinterpret_cast<unsigned*>(ring + knlSizeZ * tileSize);
    countRing = counts + tileSize;
    means = reinterpret_cast<float*>(countRing + knlSizeZ * tileSize);
    // A sum less 0 is the same sum: so the first slices enter an empty window.
    __builtin_memset(sums, 0, size_t(2 * (knlSizeZ + 1) * tileSize) * sizeof(float));
  }

  void take(const float* rowSums, const unsigned* rowCounts, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z,
            ptrdiff_t n) {
    const ptrdiff_t place = (y - part.begin[1]) * width + x - part.begin[0];
    advanceSum(sums + place, ring + slot * tileSize + place, rowSums, 1.0f, n);
    advanceSum(counts + place, countRing + slot * tileSize + place, rowCounts, 1u, n);
    const ptrdiff_t completed = z - part.marginAfter[2];  // the slice whose window ends here
    if (completed < part.begin[2]) return;
    divideByCounts(means, sums + place, counts + place, n);
    info.storers[0](info.targets[0], means, x, y, completed, n);
  }
};

const char* meanSmoothingMask(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  const Layout l(s);
  const bool oneSample =
      s.marginBefore[0] + s.marginAfter[0] + s.marginBefore[1] + s.marginAfter[1] + l.knlSizeZ == 1;
  for (ptrdiff_t y = s.begin[1]; y < s.end[1]; y += l.rows)
    for (ptrdiff_t x = s.begin[0]; x < s.end[0]; x += l.width) {
      const image::StripSource part = makePart(s, l, x, y);
      MaskedSums sums(info, part, info.scratch + l.sinkBytes());
      if (oneSample) {
        sums.convert();
        continue;
      }
      SliceSink sink(info, part, l);
      for (ptrdiff_t z = s.begin[2] - s.marginBefore[2];
           z < s.end[2] + s.marginAfter[2] && !image::isStopped(s); ++z) {
        sums.run(sink, z);
        sink.slot = sink.slot + 1 == l.knlSizeZ ? 0 : sink.slot + 1;
      }
    }
  return nullptr;
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::filter::MeanSmoothing3dMaskImgLvl3>::table() {
  static constexpr processor::KernelTable table =
      makeFloatLineTable<eConversion::Wrap>(meanSmoothingMask, scratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
