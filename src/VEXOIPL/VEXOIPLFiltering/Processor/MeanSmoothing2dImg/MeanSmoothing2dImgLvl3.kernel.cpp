// Mean over a window, for one strip of planes: the teaching example of a kernel.
//
// A kernel source is compiled once per instruction set, each time into a namespace of its own. Its functions stand in an
// anonymous namespace, so that the linker can never pick one that was compiled for another processor; only the table at
// the end is seen from outside. For the same reason it uses no standard function and allocates nothing.
//
// The mean along x of each row is a running mean: add the sample that enters the window, subtract the one that leaves.
// The mean of the window is a running sum of these line means along y. Both are sums in a fixed order, so that all
// instruction sets give the same bits. The order along x is serial, which a vector cannot do along a row; but it can do
// it for as many rows as it has lanes, on a square block of columns that is transposed before and after.

#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/Tables.h"
#include "VEXOProcessing/Kernel/Vector.h"

namespace vexo::VEXO_KERNEL_SET {

extern const processor::KernelTable meanSmoothing2dImg;

namespace {

using processor::ProcessingInfo;

inline ptrdiff_t smaller(ptrdiff_t a, ptrdiff_t b) { return a < b ? a : b; }
inline ptrdiff_t larger(ptrdiff_t a, ptrdiff_t b) { return a < b ? b : a; }
inline ptrdiff_t roundUp(ptrdiff_t n, ptrdiff_t to) { return (n + to - 1) / to * to; }

constexpr ptrdiff_t maxLanes = 16;  ///< of all instruction sets, so that tiles do not depend on the set
constexpr ptrdiff_t groupRows = lanesOf<FloatV>;

#ifndef PFL
#define PFL 2
#endif
#ifndef TILEW
#define TILEW 512
#endif
#ifndef RINGB
#define RINGB 262144
#endif

/// How a strip is cut into tiles of columns, and where lines lie in the scratch memory; sizes in floats.
struct Layout {
  ptrdiff_t knlSizeX, knlSizeY;
  ptrdiff_t lineCount;   ///< rows of the strip and its margins
  ptrdiff_t tileWidth;   ///< all lines of a tile stay in the cache
  ptrdiff_t pitch;       ///< from one line of a tile to the next
  ptrdiff_t leadOffset;  ///< in a line of input: from the samples that leave the window to those that enter it
  ptrdiff_t inputPitch;

  explicit Layout(const ProcessingInfo& info) {
    const image::StripSource& s = info.sources[0];
    knlSizeX = s.marginBefore[0] + s.marginAfter[0] + 1;
    knlSizeY = s.marginBefore[1] + s.marginAfter[1] + 1;
    lineCount = s.end[1] - s.begin[1] + knlSizeY - 1;
    const ptrdiff_t width = s.end[0] - s.begin[0];
    // A tile reads columns of its neighbours. When they may have been overwritten, one tile takes the whole width.
    const ptrdiff_t ringSamples = RINGB / sizeof(float);
    const ptrdiff_t fitting = smaller(TILEW, ringSamples / knlSizeY / maxLanes * maxLanes);
    tileWidth = info.inPlace ? width : smaller(width, larger(fitting, maxLanes));
    pitch = roundUp(tileWidth, maxLanes) | maxLanes;  // an odd number of cache lines: lines spread over the cache
    leadOffset = smaller(knlSizeX, pitch);
    inputPitch = roundUp(leadOffset + pitch, maxLanes) | maxLanes;
  }

  ptrdiff_t inputs() const { return 0; }
  ptrdiff_t results() const { return inputs() + groupRows * inputPitch; }
  ptrdiff_t ring() const { return results() + groupRows * pitch; }
  ptrdiff_t sums() const { return ring() + knlSizeY * pitch; }
  ptrdiff_t carries() const { return sums() + pitch; }
  ptrdiff_t total() const { return carries() + roundUp(lineCount, maxLanes); }
};

size_t scratchSize(const ProcessingInfo& info) { return size_t(Layout(info).total()) * sizeof(float); }

/// A tile: some columns of the strip in one plane.
struct Tile {
  const ProcessingInfo& info;
  const image::StripSource& source;
  const Layout& layout;
  float inverse;              ///< of the number of samples in the window
  ptrdiff_t begin, width, z;  ///< columns of the image
  bool first;                 ///< no tile on the left

  float *inputs, *results;  ///< lines of a group of rows
  float* ring;              ///< the last knlSizeY lines of means along x
  float* sums;              ///< their sum
  float* carries;           ///< per row: the mean along x at the last column of the tile on the left
};

void clear(float* p, ptrdiff_t n) { __builtin_memset(p, 0, size_t(n) * sizeof(float)); }

void load(const Tile& t, float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t n) {
  t.info.loaders[0](line, t.source, x, y, t.z, n);
}

/// Loads the samples that leave the window when it comes to a column of the tile, and from leadOffset on those that
/// enter it: one piece of the row, unless the window is so wide that two pieces are less. Zeros up to whole vectors.
void loadInput(const Tile& t, float* line, ptrdiff_t y) {
  const Layout& l = t.layout;
  const ptrdiff_t skipped = t.first ? 1 : 0;  // nothing leaves at the first column of the strip
  const ptrdiff_t leaving = t.begin - t.source.marginBefore[0] - 1;
  clear(line, skipped);
  if (l.leadOffset == l.knlSizeX) {
    load(t, line + skipped, leaving + skipped, y, l.knlSizeX + t.width - skipped);
  } else {
    load(t, line + skipped, leaving + skipped, y, t.width - skipped);
    clear(line + t.width, l.pitch - t.width);
    load(t, line + l.leadOffset, leaving + l.knlSizeX, y, t.width);
  }
  clear(line + l.leadOffset + t.width, l.pitch - t.width);
}

/// The means at the first column of the strip, one row per lane.
template <class V>
V firstMeans(const Tile& t, ptrdiff_t y, ptrdiff_t rows) {
  constexpr int lanes = lanesOf<V>;
  V sum = {};
  for (ptrdiff_t i = 0; i < t.layout.knlSizeX; i += t.layout.pitch) {
    const ptrdiff_t n = smaller(t.layout.knlSizeX - i, t.layout.pitch), padded = roundUp(n, lanes);
    for (ptrdiff_t r = 0; r < lanes; ++r) {
      float* line = t.inputs + r * t.layout.inputPitch;
      if (r < rows) load(t, line, t.source.begin[0] - t.source.marginBefore[0] + i, y + r, n);
      clear(r < rows ? line + n : line, r < rows ? padded - n : padded);
    }
    for (ptrdiff_t j = 0; j < padded; j += lanes) {
      V columns[lanes];
      for (int r = 0; r < lanes; ++r) columns[r] = loadVector<V>(t.inputs + r * t.layout.inputPitch + j);
      transpose(columns);
      for (int c = 0; c < lanes; ++c) sum += columns[c];
    }
  }
  return sum * splat<V>(t.inverse);
}

/// Where the lines of a group of rows lie.
template <class V>
struct Group {
  float* ring[lanesOf<V>];
  float* results[lanesOf<V>];
  const unsigned char* next[lanesOf<V>];
  const unsigned char* out[lanesOf<V>];
};

/// Columns [begin, end) of a group of as many rows as V has lanes, in square blocks. Returns the means along x at the
/// last column.
template <class V>
V runBlocks(const Tile& t, const Group<V>& group, V carry, ptrdiff_t begin, ptrdiff_t end) {
  constexpr int lanes = lanesOf<V>;
  const ptrdiff_t pitch = t.layout.inputPitch, leadOffset = t.layout.leadOffset;
  const V inverse = splat<V>(t.inverse);
  bool start = t.first && begin == 0;
  const ptrdiff_t sampleSize = t.source.sampleSize;
  for (ptrdiff_t x = begin; x < end; x += lanes) {
    V block[lanes];
    const float* in = t.inputs + x;
    if ((x * sampleSize & 63) < lanes * sampleSize) {
#pragma GCC unroll 16
    for (int r = 0; r < lanes; ++r) __builtin_prefetch(group.next[r] + x * sampleSize, 0, PFL);
#ifdef PFW
#pragma GCC unroll 16
    for (int r = 0; r < lanes; ++r) __builtin_prefetch(group.out[r] + x * t.info.targets[0].sampleSize, 1, PFW);
#endif
    }
#pragma GCC unroll 16
    for (int r = 0; r < lanes; ++r)
      block[r] = (loadVector<V>(in + r * pitch + leadOffset) - loadVector<V>(in + r * pitch)) * inverse;
    transpose(block);
    block[0] = start ? carry : block[0] + carry;
    start = false;
#pragma GCC unroll 16
    for (int c = 1; c < lanes; ++c) block[c] += block[c - 1];
    carry = block[lanes - 1];
    transpose(block);

    V sum = loadVector<V>(t.sums + x);
#pragma GCC unroll 16
    for (int r = 0; r < lanes; ++r) {
      sum -= loadVector<V>(group.ring[r] + x);  // zeros until the ring is full
      sum += block[r];
      storeVector(group.ring[r] + x, block[r]);
      storeVector(group.results[r] + x, sum);
    }
    storeVector(t.sums + x, sum);
  }
  return carry;
}

/// Runs lines [line, line + lanesOf<V>) of the tile, as far as there are so many.
template <class V>
void runGroup(const Tile& t, ptrdiff_t line) {
  constexpr int lanes = lanesOf<V>;
  const Layout& l = t.layout;
  const ptrdiff_t rows = smaller(lanes, l.lineCount - line);
  const ptrdiff_t y = t.source.begin[1] - t.source.marginBefore[1] + line;
  float carries[lanes] = {};
  V carry;
  if (t.first) {
    carry = firstMeans<V>(t, y, rows);
  } else {
    __builtin_memcpy(carries, t.carries + line, size_t(rows) * sizeof(float));
    carry = loadVector<V>(carries);
  }
  Group<V> group;
  for (ptrdiff_t r = 0; r < lanes; ++r) {
    float* input = t.inputs + r * l.inputPitch;
    if (r < rows)
      loadInput(t, input, y + r);
    else
      clear(input, l.leadOffset + l.pitch);
    group.ring[r] = t.ring + (line + r) % l.knlSizeY * l.pitch;
    group.results[r] = t.results + r * l.pitch;
    const unsigned char* row = image::sourceRow(t.source, y + smaller(lanes + r, l.lineCount - 1 - line), t.z);
    { const ptrdiff_t o = y + r - t.source.marginAfter[1]; group.out[r] = o >= t.source.begin[1] && r < rows ? image::targetRow(t.info.targets[0], o, t.z) + (t.begin - t.source.begin[0]) * t.info.targets[0].sampleSize: reinterpret_cast<unsigned char*>(input);}
    group.next[r] = row ? row + (t.begin + t.source.marginAfter[0]) * t.source.sampleSize : reinterpret_cast<unsigned char*>(input);
  }
  carry = runBlocks(t, group, carry, 0, t.width);
  storeVector(carries, carry);
  __builtin_memcpy(t.carries + line, carries, size_t(rows) * sizeof(float));
  for (ptrdiff_t r = larger(0, l.knlSizeY - 1 - line); r < rows; ++r)
    t.info.storers[0](t.info.targets[0], group.results[r], t.begin, y + r - t.source.marginAfter[1], t.z, t.width);
}

void runTile(const Tile& t) {
  const Layout& l = t.layout;
  clear(t.ring, l.knlSizeY * l.pitch);
  clear(t.sums, l.pitch);
  for (ptrdiff_t line = 0; line < l.lineCount;) {
    [[maybe_unused]] const ptrdiff_t left = l.lineCount - line;
#if defined(__AVX512F__)
    if (left > 8) {
      runGroup<Float16>(t, line);
      line += 16;
      continue;
    }
#endif
#if defined(__AVX__)
    if (left > 4) {
      runGroup<Float8>(t, line);
      line += 8;
      continue;
    }
#endif
    runGroup<Float4>(t, line);
    line += 4;
  }
}

const char* meanSmoothing(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  const Layout l(info);
  const float inverse = 1.0f / float(l.knlSizeX * l.knlSizeY);
  float* scratch = reinterpret_cast<float*>(info.scratch);
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
    for (ptrdiff_t x = s.begin[0]; x < s.end[0]; x += l.tileWidth) {
      const Tile tile = {info,
                         s,
                         l,
                         inverse,
                         x,
                         smaller(l.tileWidth, s.end[0] - x),
                         z,
                         x == s.begin[0],
                         scratch + l.inputs(),
                         scratch + l.results(),
                         scratch + l.ring(),
                         scratch + l.sums(),
                         scratch + l.carries()};
      runTile(tile);
    }
  return nullptr;
}

}  // namespace

constexpr processor::KernelTable meanSmoothing2dImg =
    makeFloatLineTable<eConversion::Wrap>(meanSmoothing, scratchSize);

}  // namespace vexo::VEXO_KERNEL_SET
