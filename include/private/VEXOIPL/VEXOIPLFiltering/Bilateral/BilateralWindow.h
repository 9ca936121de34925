#pragma once

// Bilateral filter: the mean of a window, weighted by the distance in space and in value from its centre.
// Two samples weigh as much for one another as the other way round, so range weights are looked up once per
// pair: a row meets each row of its window that follows it, and both take what the other adds to their sums.
// Rows meet in the order of the image, so each row's sums grow in the order of its window.

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/RangeWeights.h"
#include "VEXOImage/StripView.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// Rows of the strip and its margins, numbered slice by slice. Scratch memory holds those that a row meets,
/// in turn: the samples of each, and what its pixels have summed up so far. Lines are read in whole vectors:
/// what lies beyond their pixels goes into sums that nobody reads.
struct BilateralLayout {
  const image::StripSource& source;
  ptrdiff_t halfX, halfY, halfZ, width;
  ptrdiff_t rowsPerSlice;  ///< margins included
  ptrdiff_t held;          ///< rows in memory
  ptrdiff_t chunk;         ///< pixels of two rows that meet at once
  ptrdiff_t columns;       ///< that are filtered from the first row to the last
  ptrdiff_t samplePitch, sumPitch, rowSize, weightPitch;  ///< floats
  size_t weights, results, end;                           ///< bytes

  explicit BilateralLayout(const processor::ProcessingInfo& info)
      : source(info.sources[0]),
        halfX(source.marginBefore[0]),
        halfY(source.marginBefore[1]),
        halfZ(source.marginBefore[2]),
        width(source.end[0] - source.begin[0]),
        rowsPerSlice(source.end[1] - source.begin[1] + 2 * halfY),
        held(halfZ * rowsPerSlice + halfY + 1),
        // Small enough for the first-level cache, and large beside the half size: pixels before a chunk have
        // their weights looked up once more.
        chunk(smaller(larger(256, roundUp(2 * halfX, 16)), width)),
        // A plane in place has no buffer for results: the next columns would find those of these beside them.
        columns(info.inPlace && halfZ == 0 ? width : chunk),
        samplePitch(roundUp(columns + 2 * halfX + weighedAtOnce, 16)),
        sumPitch(roundUp(columns, 16)),
        rowSize(samplePitch + 2 * sumPitch),
        weightPitch(roundUp(chunk + 2 * halfX + weighedAtOnce, 16)),
        weights(size_t(held) * size_t(rowSize) * sizeof(float)),
        results(weights + size_t(2 * halfX + 1) * size_t(weightPitch) * sizeof(float)),
        end(results + size_t(sumPitch) * sizeof(float)) {}
};

/// The sums, of weights and of weighted samples, of so many vectors of pixels, further by `count` places side
/// by side: those of a place are one sample and `step` weights further than those of the place before it.
template <int vectors>
inline void addPlaces(float* weightSums, float* sums, const float* samples, const float* weights,
                      ptrdiff_t step, const float* space, ptrdiff_t count) {
  constexpr int lanes = lanesOf<FloatV>;
  FloatV weightSum[vectors], sum[vectors];
#pragma GCC unroll 4
  for (int v = 0; v < vectors; ++v) {
    weightSum[v] = loadVector<FloatV>(weightSums + v * lanes);
    sum[v] = loadVector<FloatV>(sums + v * lanes);
  }
  for (ptrdiff_t p = 0; p < count; ++p) {
    const FloatV factor = splat<FloatV>(space[p]);
#pragma GCC unroll 4
    for (int v = 0; v < vectors; ++v) {
      const FloatV weight = loadVector<FloatV>(weights + p * step + v * lanes) * factor;
      weightSum[v] += weight;
      sum[v] += weight * loadVector<FloatV>(samples + p + v * lanes);
    }
  }
#pragma GCC unroll 4
  for (int v = 0; v < vectors; ++v) {
    storeVector(weightSums + v * lanes, weightSum[v]);
    storeVector(sums + v * lanes, sum[v]);
  }
}
/// The same for n pixels.
inline void addPlaces(float* weightSums, float* sums, const float* samples, const float* weights,
                      ptrdiff_t step, const float* space, ptrdiff_t count, ptrdiff_t n) {
  constexpr int vectors = 4;  // which hide the time that an addition takes
  ptrdiff_t i = 0;
  for (; i + vectors * lanesOf<FloatV> <= n; i += vectors * lanesOf<FloatV>)
    addPlaces<vectors>(weightSums + i, sums + i, samples + i, weights + i, step, space, count);
  for (; i < n; i += lanesOf<FloatV>)
    addPlaces<1>(weightSums + i, sums + i, samples + i, weights + i, step, space, count);
}

template <class Table>
class BilateralStrip {
public:
  BilateralStrip(const processor::ProcessingInfo& info, const Table& table)
      : _info(info),
        _p(*static_cast<const BilateralParameters*>(info.parameters)),
        _table(table),
        _l(info),
        _weights(reinterpret_cast<float*>(info.scratch + _l.weights)),
        _results(reinterpret_cast<float*>(info.scratch + _l.results)) {}

  /// A function of its own for each table: beside the loops of other tables those of registers take a tenth
  /// longer.
  [[gnu::noinline]] void run() const {
    __builtin_memset(_info.scratch, 0, _l.end);  // what is read beyond the pixels
    for (ptrdiff_t x = 0; x < _l.width; x += _l.columns)
      filterColumns(_l.source.begin[0] + x, smaller(_l.columns, _l.width - x));
  }

private:
  struct Row {
    ptrdiff_t y, z;
    bool inStrip;  ///< not in the margins: its pixels are centres
    float *samples, *weightSums, *sums;
  };
  Row rowAt(ptrdiff_t y, ptrdiff_t z) const {
    const image::StripSource& s = _l.source;
    const ptrdiff_t number = (z - s.begin[2] + _l.halfZ) * _l.rowsPerSlice + y - s.begin[1] + _l.halfY;
    float* const memory = reinterpret_cast<float*>(_info.scratch) + number % _l.held * _l.rowSize;
    return {y,
            z,
            y >= s.begin[1] && y < s.end[1] && z >= s.begin[2] && z < s.end[2],
            memory,
            memory + _l.samplePitch,
            memory + _l.samplePitch + _l.sumPitch};
  }

  /// n columns from x on.
  void filterColumns(ptrdiff_t x, ptrdiff_t n) const {
    const image::StripSource& s = _l.source;
    const ptrdiff_t rows = (s.end[2] - s.begin[2] + 2 * _l.halfZ) * _l.rowsPerSlice;
    const auto rowOf = [&](ptrdiff_t number) {
      return rowAt(s.begin[1] - _l.halfY + number % _l.rowsPerSlice,
                   s.begin[2] - _l.halfZ + number / _l.rowsPerSlice);
    };
    const auto load = [&](const Row& row) {
      _info.loaders[0](row.samples, s, x - _l.halfX, row.y, row.z, n + 2 * _l.halfX);
      __builtin_memset(row.weightSums, 0, size_t(2 * _l.sumPitch) * sizeof(float));
    };
    for (ptrdiff_t i = 0; i < _l.held - 1; ++i) load(rowOf(i));
    for (ptrdiff_t i = 0; i < rows; ++i) {
      if (image::isStopped(s)) return;
      if (i + _l.held - 1 < rows) load(rowOf(i + _l.held - 1));
      const Row row = rowOf(i);
      for (ptrdiff_t c = 0; c < n; c += _l.chunk) meetOthers(row, c, smaller(_l.chunk, n - c));
      if (!row.inStrip) continue;
      for (ptrdiff_t c = 0; c < n; c += lanesOf<FloatV>)
        storeVector(_results + c, loadVector<FloatV>(row.sums + c) / loadVector<FloatV>(row.weightSums + c));
      _info.storers[0](_info.targets[0], _results, x, row.y, row.z, n);
    }
  }

  /// The pixels c to c + n of a row meet those of themselves and the rows after it.
  void meetOthers(const Row& row, ptrdiff_t c, ptrdiff_t n) const {
    if (row.inStrip) meetItself(row, c, n);
    for (ptrdiff_t dz = 0; dz <= _l.halfZ; ++dz)
      for (ptrdiff_t dy = dz == 0 ? 1 : -_l.halfY; dy <= _l.halfY; ++dy) {
        const Row other = rowAt(row.y + dy, row.z + dz);
        if (row.inStrip || other.inStrip) meet(row, other, dy, dz, c, n);
      }
  }

  /// The spatial weights of the places (-halfX, dy, dz) onwards.
  const float* spaceOf(ptrdiff_t dy, ptrdiff_t dz) const {
    return _p.space + ((_l.halfZ + dz) * (2 * _l.halfY + 1) + _l.halfY + dy) * (2 * _l.halfX + 1);
  }
  /// The line of range weights of a row's pixels with those dx columns further in the other row.
  float* weightsOf(ptrdiff_t dx) const { return _weights + (_l.halfX + dx) * _l.weightPitch + _l.halfX; }
  /// Fills it for both: for the pixels c to c + n of `row`, and for those that lie dx columns before these.
  void weigh(const Row& row, const Row& other, ptrdiff_t dx, ptrdiff_t c, ptrdiff_t n) const {
    const ptrdiff_t first = dx > 0 ? -dx : 0, count = n + (dx > 0 ? dx : -dx), at = _l.halfX + c + first;
    _table.weigh(weightsOf(dx) + first, row.samples + at, other.samples + at + dx, count);
  }

  /// The places of a window's row, from the left: dx rises in the row that comes after, falls in the one that
  /// comes before, where the pixel dx columns before has the weight.
  void meet(const Row& row, const Row& other, ptrdiff_t dy, ptrdiff_t dz, ptrdiff_t c, ptrdiff_t n) const {
    const ptrdiff_t h = _l.halfX, size = 2 * h + 1;
    for (ptrdiff_t dx = -h; dx <= h; ++dx) weigh(row, other, dx, c, n);
    if (other.inStrip)
      addPlaces(other.weightSums + c, other.sums + c, row.samples + c, weightsOf(h) - h, 1 - _l.weightPitch,
                spaceOf(-dy, -dz), size, n);
    if (row.inStrip)
      addPlaces(row.weightSums + c, row.sums + c, other.samples + c, weightsOf(-h), _l.weightPitch,
                spaceOf(dy, dz), size, n);
  }
  void meetItself(const Row& row, ptrdiff_t c, ptrdiff_t n) const {
    const ptrdiff_t h = _l.halfX;
    const float* space = spaceOf(0, 0);
    for (ptrdiff_t dx = 0; dx <= h; ++dx) weigh(row, row, dx, c, n);
    addPlaces(row.weightSums + c, row.sums + c, row.samples + c, weightsOf(h) - h, 1 - _l.weightPitch, space,
              h, n);
    addPlaces(row.weightSums + c, row.sums + c, row.samples + c + h, weightsOf(0), _l.weightPitch, space + h,
              h + 1, n);
  }

  const processor::ProcessingInfo& _info;
  const BilateralParameters& _p;
  const Table& _table;
  const BilateralLayout _l;
  float *const _weights, *const _results;
};

inline const char* filterBilaterally(const processor::ProcessingInfo& info) {
  withRangeTable(*static_cast<const BilateralParameters*>(info.parameters),
                 [&](const auto& table) { BilateralStrip(info, table).run(); });
  return nullptr;
}

inline size_t bilateralScratchSize(const processor::ProcessingInfo& info) {
  return BilateralLayout(info).end;
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
