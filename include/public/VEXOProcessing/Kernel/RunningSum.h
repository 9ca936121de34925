#pragma once

// Sums over windows that cost the same for every size of the window.
//
// The sum along x of each row is a running sum: add the sample that enters the window, subtract the one that
// leaves. The sum over the window is a running sum of these along y, and over volumes again along z. All have
// a fixed order of additions, so that all instruction sets and all tilings give the same bits. The order
// along x is serial, which the lanes of a vector cannot follow along one row; but they can for as many rows
// at once, on square blocks transposed before and after.

#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/Lines.h"
#include "VEXOProcessing/Kernel/Vector.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// One step of a running sum, for n windows side by side: the line that leaves gives its place to the one
/// that enters, scaled.
template <class T>
inline void advanceSum(T* sums, T* leaving, const T* entering, T scale, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const T value = entering[i] * scale;
    T sum = sums[i] - leaving[i];
    sum += value;
    sums[i] = sum;
    leaving[i] = value;
  }
}

/// Samples of a strip in, results out, by the loader and the storer of their types.
struct StripLines {
  const processor::ProcessingInfo& info;
  void load(float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) const {
    info.loaders[0](line, info.sources[0], x, y, z, n);
  }
  void store(const float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) const {
    info.storers[0](info.targets[0], line, x, y, z, n);
  }
};

/// A window of one sample: the strip, converted, by pieces of rows. A running sum would lose small values
/// next to large ones, and carry a NaN along. Integers that a float would round are copied.
template <class Lines>
inline void convertStrip(const Lines& lines, const image::StripSource& s, float* line, ptrdiff_t lineLength) {
  if (copyIntegers(lines.info, s)) return;
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
    for (ptrdiff_t y = s.begin[1]; y < s.end[1] && !image::isStopped(s); ++y)
      for (ptrdiff_t x = s.begin[0]; x < s.end[0]; x += lineLength) {
        const ptrdiff_t n = smaller(lineLength, s.end[0] - x);
        lines.load(line, x, y, z, n);
        lines.store(line, x, y, z, n);
      }
}

constexpr ptrdiff_t groupRows = lanesOf<FloatV>;  ///< rows that run at once
constexpr ptrdiff_t cacheLine = 64;
constexpr ptrdiff_t cacheLineFloats = cacheLine / sizeof(float);
constexpr ptrdiff_t maxTileWidth = 2048;
constexpr ptrdiff_t maxRingFloats = 128 * 1024;

/// How a strip is cut into tiles of columns, so that all lines of a tile stay in the second-level cache, and
/// how long these are, in floats.
struct WindowLayout {
  ptrdiff_t knlSizeX, knlSizeY;
  ptrdiff_t lineCount;   ///< rows of the strip with its margins
  ptrdiff_t tileWidth;   ///< columns
  ptrdiff_t pitch;       ///< from line to line
  ptrdiff_t leadOffset;  ///< in the input: from the sample that leaves the window to the one that enters
  ptrdiff_t inputPitch;  ///< from line to line of the input

  /// In place, columns that a neighbour reads may have been overwritten: one tile then takes the whole width.
  WindowLayout(const image::StripSource& s, bool inPlace) {
    knlSizeX = s.marginBefore[0] + s.marginAfter[0] + 1;
    knlSizeY = s.marginBefore[1] + s.marginAfter[1] + 1;
    lineCount = s.end[1] - s.begin[1] + knlSizeY - 1;
    const ptrdiff_t width = s.end[0] - s.begin[0];
    const ptrdiff_t widest = clamp(maxRingFloats / knlSizeY, cacheLineFloats, maxTileWidth);
    const ptrdiff_t tileCount = divideUp(width, widest / cacheLineFloats * cacheLineFloats);
    tileWidth = inPlace ? width : roundUp(divideUp(width, tileCount), cacheLineFloats);
    leadOffset = smaller(knlSizeX, pitchOf(tileWidth));
    pitch = pitchOf(tileWidth);
    inputPitch = pitchOf(leadOffset + pitch);
  }

  /// An odd number of cache lines: lines then do not compete for the same places in the cache.
  static ptrdiff_t pitchOf(ptrdiff_t n) { return roundUp(n, cacheLineFloats) | cacheLineFloats; }

  /// The floats that a WindowTile takes.
  ptrdiff_t scratchFloats() const {
    return groupRows * (inputPitch + pitch) + (knlSizeY + 1) * pitch + roundUp(lineCount, groupRows);
  }
};

/// Some columns of the strip in one plane, and its lines in the scratch memory.
///
/// Lines serves the samples: load(line, x, y, z, n) reads them as floats; store(line, x, y, z, n) takes the
/// sums, times the scale, of the windows around n columns of a row. Rows are stored from top to bottom.
template <class Lines>
struct WindowTile {
  Lines& lines;
  const image::StripSource& source;
  const WindowLayout& layout;
  float scale;
  ptrdiff_t begin, width, z;  ///< in the image
  bool first;                 ///< no tile on the left
  float* inputs;              ///< lines of the group of rows that runs, padded by the margins
  float* results;             ///< lines of the group of rows that runs
  float* ring;                ///< the last knlSizeY lines of scaled sums along x
  float* sums;                ///< their sum
  float* carries;             ///< per line, the scaled sum along x at the last column of the tile on the left

  WindowTile(Lines& lines, const image::StripSource& source, const WindowLayout& l, float scale, ptrdiff_t x,
             ptrdiff_t z, float* scratch)
      : lines(lines), source(source), layout(l), scale(scale), begin(x), z(z), first(x == source.begin[0]) {
    width = smaller(l.tileWidth, source.end[0] - x);
    inputs = scratch;
    results = inputs + groupRows * l.inputPitch;
    ring = results + groupRows * l.pitch;
    sums = ring + l.knlSizeY * l.pitch;
    carries = sums + l.pitch;
  }

  void load(float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t n) const { lines.load(line, x, y, z, n); }
};

/// The sums of the samples [from, to) of the first window of rows y, y + 1 ... in the lanes.
template <class V, class Lines>
V sumSamples(const WindowTile<Lines>& t, ptrdiff_t from, ptrdiff_t to, ptrdiff_t y, ptrdiff_t rows) {
  constexpr int lanes = lanesOf<V>;
  const WindowLayout& l = t.layout;
  V sum = {};
  for (ptrdiff_t i = from; i < to; i += l.pitch) {
    const ptrdiff_t n = smaller(to - i, l.pitch);
    for (ptrdiff_t r = 0; r < lanes; ++r) {
      float* line = t.inputs + r * l.inputPitch;
      clearLine(line, roundUp(n, lanes));
      if (r < rows) t.load(line, t.begin - t.source.marginBefore[0] + i, y + r, n);
    }
    for (ptrdiff_t j = 0; j < n; j += lanes) {
      V block[lanes];
      for (int r = 0; r < lanes; ++r) block[r] = loadVector<V>(t.inputs + r * l.inputPitch + j);
      transpose(block);
      for (int c = 0; c < lanes; ++c) sum += block[c];
    }
  }
  return sum;
}

/// The scaled sums along x at the first column of the strip. A mirrored row repeats itself: where the window
/// holds many of its periods, one is summed, so that a window far larger than the image costs no more than
/// one of its size.
template <class V, class Lines>
V firstSums(const WindowTile<Lines>& t, ptrdiff_t y, ptrdiff_t rows) {
  const ptrdiff_t period = 2 * t.source.size[0];
  const bool repeats = t.source.border == image::eBorder::Mirror && t.layout.knlSizeX > 2 * period;
  const ptrdiff_t periods = repeats ? t.layout.knlSizeX / period : 0;
  V sum = sumSamples<V>(t, periods * period, t.layout.knlSizeX, y, rows);
  if (repeats) sum += sumSamples<V>(t, 0, period, y, rows) * splat<V>(float(periods));
  return sum * splat<V>(t.scale);
}

/// Loads the samples that leave the window at each column of the tile, and leadOffset after them those that
/// enter it: one piece of the row, or two where the window is wider than the tile. Zeros fill the last
/// vector.
template <class Lines>
void loadInput(const WindowTile<Lines>& t, float* line, ptrdiff_t y) {
  const WindowLayout& l = t.layout;
  const bool onePiece = l.leadOffset == l.knlSizeX;
  const ptrdiff_t x = t.begin - t.source.marginBefore[0] - 1;
  const ptrdiff_t skipped = t.first ? 1 : 0;  // nothing leaves at the first column of the strip
  clearLine(line, skipped);
  t.load(line + skipped, x + skipped, y, (onePiece ? l.leadOffset : 0) + t.width - skipped);
  if (!onePiece) {
    clearLine(line + t.width, l.pitch - t.width);
    t.load(line + l.leadOffset, x + l.knlSizeX, y, t.width);
  }
  clearLine(line + l.leadOffset + t.width, l.pitch - t.width);
}

/// Where the lines of a group lie, of as many rows as V has lanes.
template <class V>
struct WindowGroup {
  float* ring[lanesOf<V>];  ///< holds the line that leaves the window, and takes the one that enters it
  float* results[lanesOf<V>];
  const unsigned char* next[lanesOf<V>];  ///< what the next group loads, to be asked for early
};

/// Runs the columns of a group in square blocks. The carry is the scaled sums along x left of the tile; in
/// the first tile, those at its first column. Returns those at the last column.
template <class V, class Lines>
V runBlocks(const WindowTile<Lines>& t, const WindowGroup<V>& group, V carry) {
  constexpr int lanes = lanesOf<V>;
  const ptrdiff_t inputPitch = t.layout.inputPitch, leadOffset = t.layout.leadOffset;
  const ptrdiff_t sampleSize = t.source.sampleSize;
  const V scale = splat<V>(t.scale);
  bool first = t.first;
  for (ptrdiff_t x = 0; x < t.width; x += lanes) {
    if (x * sampleSize % cacheLine < lanes * sampleSize) {  // once per cache line
#pragma GCC unroll 16
      for (int r = 0; r < lanes; ++r) __builtin_prefetch(group.next[r] + x * sampleSize, 0, 2);
    }

    V block[lanes];  // one row each; the compiler must unroll the loops to keep them in registers
    const float* in = t.inputs + x;
#pragma GCC unroll 16
    for (int r = 0; r < lanes; ++r)
      block[r] =
          (loadVector<V>(in + r * inputPitch + leadOffset) - loadVector<V>(in + r * inputPitch)) * scale;

    transpose(block);  // one column each
    block[0] = first ? carry : block[0] + carry;
    first = false;
#pragma GCC unroll 16
    for (int c = 1; c < lanes; ++c) block[c] += block[c - 1];
    carry = block[lanes - 1];
    transpose(block);

    V sum = loadVector<V>(t.sums + x);
#pragma GCC unroll 16
    for (int r = 0; r < lanes; ++r) {
      sum -= loadVector<V>(group.ring[r] + x);
      sum += block[r];
      storeVector(group.ring[r] + x, block[r]);
      storeVector(group.results[r] + x, sum);
    }
    storeVector(t.sums + x, sum);
  }
  return carry;
}

/// Runs the lines from the given one on, as many as V has lanes, and returns their number. At the end of the
/// strip lanes may have no line: they compute with zeros and are not stored.
template <class V, class Lines>
ptrdiff_t runGroup(const WindowTile<Lines>& t, ptrdiff_t line) {
  constexpr int lanes = lanesOf<V>;
  const WindowLayout& l = t.layout;
  const ptrdiff_t rows = smaller(lanes, l.lineCount - line);
  const ptrdiff_t y = t.source.begin[1] - t.source.marginBefore[1] + line;

  V carry = t.first ? firstSums<V>(t, y, rows) : loadVector<V>(t.carries + line);
  WindowGroup<V> group;
  for (ptrdiff_t r = 0; r < lanes; ++r) {
    float* input = t.inputs + r * l.inputPitch;
    if (r < rows)
      loadInput(t, input, y + r);
    else
      clearLine(input, l.leadOffset + l.pitch);
    group.ring[r] = t.ring + (line + r) % l.knlSizeY * l.pitch;
    group.results[r] = t.results + r * l.pitch;
    const ptrdiff_t nextLine = smaller(line + lanes + r, l.lineCount - 1);
    const unsigned char* row = image::sourceRow(t.source, y - line + nextLine, t.z);
    group.next[r] = row ? row + t.begin * t.source.sampleSize : t.source.image;
  }
  carry = runBlocks(t, group, carry);
  storeVector(t.carries + line, carry);

  // Line i completes the window of the row marginAfter above it; the first knlSizeY - 1 lines complete none.
  for (ptrdiff_t r = larger(0, l.knlSizeY - 1 - line); r < rows; ++r)
    t.lines.store(group.results[r], t.begin, y + r - t.source.marginAfter[1], t.z, t.width);
  return lanes;
}

/// Chooses the number of rows: narrower vectors do not compute many lines in vain when few are left.
template <class Lines>
ptrdiff_t runNextGroup(const WindowTile<Lines>& t, ptrdiff_t line) {
#if defined(__AVX512F__)
  if (t.layout.lineCount - line > 8) return runGroup<Float16>(t, line);
#endif
#if defined(__AVX__)
  if (t.layout.lineCount - line > 4) return runGroup<Float8>(t, line);
#endif
  return runGroup<Float4>(t, line);
}

/// Runs all rows of a tile.
template <class Lines>
void runWindowTile(const WindowTile<Lines>& t) {
  // A sum less 0 is the same sum: so the first lines enter an empty window.
  clearLine(t.ring, t.layout.knlSizeY * t.layout.pitch);
  clearLine(t.sums, t.layout.pitch);
  for (ptrdiff_t line = 0; line < t.layout.lineCount && !image::isStopped(t.source);)
    line += runNextGroup(t, line);
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
