#pragma once

// Sums of weighted neighbours for one strip, of planes or of volumes: the algorithm of both convolution
// kernel sources.
//
// Each pixel is a sum in single precision over the points of the kernel in their own order, whatever the
// tiling, so all instruction sets give the same bits. Vectors run across pixels; a block of them stays in
// registers for all points.
//
// There are two ways through a strip. Most kernels read each row many times: a ring holds the lines that the
// rows in progress need, each loaded once. Kernels whose points lie on few rows, wide apart, would fill such
// a ring with rows that nobody reads: they load, for each row of the output, the rows of their points, one
// after the other.

#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionPlan.h"
#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionTaps.h"
#include "VEXOProcessing/Kernel/Lines.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

constexpr ptrdiff_t prefetchWidth = 128;

inline size_t convolutionScratchSize(const ProcessingInfo& info) {
  return Plan(info).scratchFloats() * sizeof(float);
}

struct Convolution {
  const ProcessingInfo& info;
  const image::StripSource& source;
  const Plan plan;
  float* lines;  ///< of the input, padded by what the offsets reach
  float* sums;   ///< one line, or a segment of several

  explicit Convolution(const ProcessingInfo& info) : info(info), source(info.sources[0]), plan(info) {
    lines = reinterpret_cast<float*>(info.scratch);
    sums = lines + plan.scratchFloats() - plan.sumsFloats();
  }

  /// Points [from, from + n) of the kernel, n > 0.
  Stage stageOf(ptrdiff_t from, ptrdiff_t n) const {
    const bool last = from + n == plan.kernel.count;
    return {from == 0, last && plan.kernel.normalize && plan.kernel.norm != 1, plan.kernel.norm};
  }

  void load(float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t width) const {
    info.loaders[0](line, source, x + plan.first[0], y, z, width + plan.extent[0] - 1);
  }
  void store(ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t width) const {
    info.storers[0](info.targets[0], sums, x, y, z, width);
  }

  /// Asks for samples that will be loaded soon, while others are computed. Not for more at once: bursts were
  /// measured to have no effect.
  void prefetch(const unsigned char* row, ptrdiff_t x) const {
    if (!row) return;
    for (ptrdiff_t i = x * source.sampleSize; i < (x + prefetchWidth) * source.sampleSize; i += 64)
      __builtin_prefetch(row + i, 0, 3);
  }

  /// One row of a tile, row by row of the kernel.
  void runRow(ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t width) const {
    const ConvolutionPoints& k = plan.kernel;
    if (k.count == 0) clearLine(sums, width);
    const float* found[chunkSize];
    for (ptrdiff_t i = 0, n; i < k.count; i += n) {
      const ConvolutionPoint& p = k.points[i];
      if (i == 0 || !onSameRow(p, k.points[i - 1])) load(lines, x, y + p.offset[1], z + p.offset[2], width);
      for (n = 0; n < chunkSize && i + n < k.count && onSameRow(k.points[i + n], p); ++n)
        found[n] = lines + (k.points[i + n].offset[0] - plan.first[0]);
      const unsigned char* next = k.count == n && y + 1 < source.end[1]
                                      ? image::sourceRow(source, y + 1 + p.offset[1], z + p.offset[2])
                                      : nullptr;
      for (ptrdiff_t from = 0; from < width; from += prefetchWidth) {
        prefetch(next, x + from);
        addTapsToLine({found, k.weights + i, n}, stageOf(i, n), sums, from,
                      smaller(from + prefetchWidth, width));
      }
    }
    store(x, y, z, width);
  }

  void runRows() const {
    const image::StripSource& s = source;
    for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
      for (ptrdiff_t y = s.begin[1]; y < s.end[1] && !image::isStopped(s); ++y)
        for (ptrdiff_t x = s.begin[0]; x < s.end[0]; x += plan.tileWidth)
          runRow(x, y, z, smaller(plan.tileWidth, s.end[0] - x));
  }

  /// Some columns of some rows, with the ring: position p on the outer axis lies in the slot p modulo its
  /// size.
  struct Tile {
    ptrdiff_t x, width;
    ptrdiff_t inner, rows;
  };

  void loadSlot(const Tile& t, ptrdiff_t outer, ptrdiff_t slot) const {
    for (ptrdiff_t i = 0; i < t.rows + plan.extent[plan.inner] - 1; ++i) {
      const ptrdiff_t inner = t.inner + plan.first[plan.inner] + i;
      load(lines + (slot * plan.slotLines + i) * plan.pitch, t.x, plan.outer == 1 ? outer : inner,
           plan.outer == 1 ? inner : outer, t.width);
    }
  }

  /// Where the taps of a row find their lines, when the position of its smallest offset along the outer axis
  /// lies in the slot `oldest`.
  void lookUp(const float** found, ptrdiff_t from, ptrdiff_t n, ptrdiff_t row, ptrdiff_t oldest) const {
    for (ptrdiff_t i = 0; i < n; ++i) {
      const int* offset = plan.kernel.points[from + i].offset;
      ptrdiff_t slot = oldest + (offset[plan.outer] - plan.first[plan.outer]);
      if (slot >= plan.slots) slot -= plan.slots;
      const ptrdiff_t line = slot * plan.slotLines + row + (offset[plan.inner] - plan.first[plan.inner]);
      found[i] = lines + line * plan.pitch + (offset[0] - plan.first[0]);
    }
  }

  /// One row, when the kernel has more points than are looked up together.
  void runLongRow(const Tile& t, ptrdiff_t row, ptrdiff_t outer, ptrdiff_t oldest) const {
    const float* found[chunkSize];
    for (ptrdiff_t i = 0; i < plan.kernel.count; i += chunkSize) {
      const ptrdiff_t n = smaller(chunkSize, plan.kernel.count - i);
      lookUp(found, i, n, row, oldest);
      addTapsToLine({found, plan.kernel.weights + i, n}, stageOf(i, n), sums, 0, t.width);
    }
    storeSums(sums, t, row, outer, 0, t.width);
  }

  void runBatch(const Tile& t, ptrdiff_t row, ptrdiff_t outer, ptrdiff_t rows, ptrdiff_t oldest) const {
    const float* found[chunkSize];
    const ptrdiff_t count = plan.kernel.count;
    for (ptrdiff_t r = 0; r < rows; ++r) {
      const ptrdiff_t slot = oldest + r;
      lookUp(found + r * count, 0, count, row, slot < plan.slots ? slot : slot - plan.slots);
    }
    for (ptrdiff_t x = 0; x < t.width; x += plan.segmentWidth) {
      const ptrdiff_t end = smaller(x + plan.segmentWidth, t.width);
      for (ptrdiff_t r = 0, n; r < rows; r += n) {
        n = smaller(rows - r, plan.sharing);
        const unsigned char* next[maxSharing];
        for (ptrdiff_t i = 0; i < n; ++i) next[i] = rowAhead(t, row, outer + rows + r + i);
        for (ptrdiff_t from = x; from < end; from += prefetchWidth) {
          for (ptrdiff_t i = 0; i < n; ++i) prefetch(next[i], t.x + from);
          addBlock({found + r * count, plan.kernel.weights, count}, n, sums - x, from,
                   smaller(from + prefetchWidth, end));
        }
        for (ptrdiff_t i = 0; i < n; ++i)
          storeSums(sums + i * plan.sumsPitch(), t, row, outer + r + i, x, end);
      }
    }
  }

  /// The row that is loaded before the given one is computed; null when there is none.
  const unsigned char* rowAhead(const Tile& t, ptrdiff_t row, ptrdiff_t outer) const {
    if (outer >= source.end[plan.outer]) return nullptr;
    const ptrdiff_t o = outer + plan.first[plan.outer] + plan.extent[plan.outer] - 1;
    const ptrdiff_t i = t.inner + row + plan.first[plan.inner];
    return image::sourceRow(source, plan.outer == 1 ? o : i, plan.outer == 1 ? i : o);
  }

  /// Columns [x, end) of so many rows.
  void addBlock(const Taps& taps, ptrdiff_t rows, float* sums, ptrdiff_t x, ptrdiff_t end) const {
    const Stage stage = stageOf(0, taps.count);
    const ptrdiff_t pitch = plan.sumsPitch();
    switch (rows) {
      case 1:
        return addTapsToLine(taps, stage, sums, x, end);
      case 2:
        return addSharedTaps<2>(taps, plan.shift, stage, sums, pitch, x, end);
      case 3:
        return addSharedTaps<3>(taps, plan.shift, stage, sums, pitch, x, end);
      default:
        return addSharedTaps<4>(taps, plan.shift, stage, sums, pitch, x, end);
    }
  }

  /// Columns [from, to) of a tile.
  void storeSums(const float* line, const Tile& t, ptrdiff_t row, ptrdiff_t outer, ptrdiff_t from,
                 ptrdiff_t to) const {
    const ptrdiff_t inner = t.inner + row;
    info.storers[0](info.targets[0], line, t.x + from, plan.outer == 1 ? outer : inner,
                    plan.outer == 1 ? inner : outer, to - from);
  }

  void runTile(const Tile& t) const {
    const ptrdiff_t begin = source.begin[plan.outer], end = source.end[plan.outer];
    const ptrdiff_t first = plan.first[plan.outer], ahead = plan.extent[plan.outer] - 1;
    for (ptrdiff_t i = 0; i < ahead; ++i) loadSlot(t, begin + first + i, i);
    ptrdiff_t oldest = 0;
    for (ptrdiff_t outer = begin; outer < end && !image::isStopped(source); outer += plan.batch) {
      const ptrdiff_t rows = smaller(plan.batch, end - outer);
      for (ptrdiff_t r = 0; r < rows; ++r)
        loadSlot(t, outer + r + first + ahead, (oldest + r + ahead) % plan.slots);
      for (ptrdiff_t row = 0; row < t.rows; ++row) {
        if (plan.kernel.count <= chunkSize)
          runBatch(t, row, outer, rows, oldest);
        else
          runLongRow(t, row, outer, oldest);
      }
      oldest = (oldest + rows) % plan.slots;
    }
  }

  void runTiles() const {
    const image::StripSource& s = source;
    const int inner = plan.inner;
    for (ptrdiff_t i = s.begin[inner]; i < s.end[inner]; i += plan.tileRows)
      for (ptrdiff_t x = s.begin[0]; x < s.end[0]; x += plan.tileWidth)
        runTile({x, smaller(plan.tileWidth, s.end[0] - x), i, smaller(plan.tileRows, s.end[inner] - i)});
  }
};

/// One point that leaves every sample as it is.
inline bool isIdentity(const ConvolutionPoints& k) {
  return k.count == 1 && k.weights[0] == 1 && k.points[0].offset[0] == 0 && k.points[0].offset[1] == 0 &&
         k.points[0].offset[2] == 0;
}

inline const char* convolve(const ProcessingInfo& info) {
  if (isIdentity(*static_cast<const ConvolutionPoints*>(info.parameters)) &&
      copyIntegers(info, info.sources[0]))
    return nullptr;
  const Convolution run(info);
  if (run.plan.ring)
    run.runTiles();
  else
    run.runRows();
  return nullptr;
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
