#pragma once

// One pass of the separated bilateral filter: from each pixel walks both ways along an axis; on each the
// weight of a difference is the least one met so far. The samples at one distance are a line, whatever the
// axis, so that many pixels of a row walk at once. What a pixel finds ahead, the other one finds behind: near
// range weights are looked up once and kept for the way back.

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/RangeWeights.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

constexpr ptrdiff_t chunk = 256;  ///< pixels that walk at once
constexpr ptrdiff_t block = 32;   ///< distances that they walk at once; the weights of the first are kept
constexpr ptrdiff_t walkedAtOnce = 4 * lanesOf<FloatV>;
static_assert(chunk % walkedAtOnce == 0, "a chunk is read whole");

/// Scratch memory: lines of samples, of weights, and one of results.
struct WalkLayout {
  ptrdiff_t half, columns, lineCount, pitch, kept, keptLines;
  size_t weights, results, end;  ///< bytes

  static constexpr ptrdiff_t weightPitch = chunk + block + weighedAtOnce;

  WalkLayout(const image::StripSource& s, int axis)
      : half(s.marginBefore[axis]),
        // Along X a row is loaded whole, before the results of its first columns may stand in their place.
        columns(axis == 0 ? s.end[0] - s.begin[0] : smaller(chunk, s.end[0] - s.begin[0])),
        lineCount(axis == 0 ? 1 : 2 * half + 1),
        pitch(roundUp(columns, chunk) + (axis == 0 ? roundUp(2 * half, 16) : 0) + weighedAtOnce),
        kept(smaller(half, block)),
        keptLines(axis == 0 ? kept : kept * (kept + 3) / 2),
        weights(size_t(lineCount) * size_t(pitch) * sizeof(float)),
        results(weights + size_t(keptLines + (half > block ? block : 0)) * weightPitch * sizeof(float)),
        end(results + size_t(roundUp(columns, chunk)) * sizeof(float)) {}
};

/// What n pixels have met: the least weight on the present way, the sums of both ways.
struct Walked {
  float running[chunk], weightSums[chunk], sums[chunk];

  /// `count` steps on, to samples[k] with the range weights weights[k].
  void add(const float* const* samples, const float* const* weights, const float* space, ptrdiff_t count,
           ptrdiff_t n) {
    constexpr int lanes = lanesOf<FloatV>, vectors = walkedAtOnce / lanes;
    for (ptrdiff_t i = 0; i < n; i += walkedAtOnce) {
      FloatV least[vectors], weightSum[vectors], sum[vectors];
#pragma GCC unroll 4
      for (int v = 0; v < vectors; ++v) {
        least[v] = loadVector<FloatV>(running + i + v * lanes);
        weightSum[v] = loadVector<FloatV>(weightSums + i + v * lanes);
        sum[v] = loadVector<FloatV>(sums + i + v * lanes);
      }
      for (ptrdiff_t k = 0; k < count; ++k) {
        const FloatV factor = splat<FloatV>(space[k]);
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v) {
          least[v] = lower(least[v], loadVector<FloatV>(weights[k] + i + v * lanes));
          const FloatV weight = factor * least[v];
          weightSum[v] += weight;
          sum[v] += weight * loadVector<FloatV>(samples[k] + i + v * lanes);
        }
      }
#pragma GCC unroll 4
      for (int v = 0; v < vectors; ++v) {
        storeVector(running + i + v * lanes, least[v]);
        storeVector(weightSums + i + v * lanes, weightSum[v]);
        storeVector(sums + i + v * lanes, sum[v]);
      }
    }
  }
};

/// A strip: `inner` is the axis that the rows of the strip follow one another along, and `outer` the other
/// one.
template <int axis, class Table>
class WalkStrip {
public:
  WalkStrip(const processor::ProcessingInfo& info, const Table& table)
      : _info(info),
        _s(info.sources[0]),
        _p(*static_cast<const BilateralParameters*>(info.parameters)),
        _table(table),
        _l(_s, axis),
        _reach(axis == 0 ? 0 : _l.half) {}

  void run() const {
    __builtin_memset(_info.scratch, 0, _l.end);  // what is read beyond the pixels
    for (ptrdiff_t x = _s.begin[0]; x < _s.end[0]; x += _l.columns)
      for (ptrdiff_t o = _s.begin[outer]; o < _s.end[outer]; ++o)
        walkTile(x, smaller(_l.columns, _s.end[0] - x), o);
  }

private:
  static constexpr int inner = axis == 2 ? 2 : 1, outer = 3 - inner;

  void walkTile(ptrdiff_t x, ptrdiff_t n, ptrdiff_t o) const {
    float* const results = reinterpret_cast<float*>(_info.scratch + _l.results);
    const auto load = [&](ptrdiff_t i) {
      _info.loaders[0](lineOf(i), _s, x - _s.marginBefore[0], inner == 1 ? i : o, inner == 1 ? o : i,
                       n + 2 * _s.marginBefore[0]);
    };
    const ptrdiff_t begin = _s.begin[inner];
    for (ptrdiff_t i = begin - _reach; i < begin + _reach; ++i) load(i);
    if (axis != 0)
      for (ptrdiff_t d = 1; d <= _l.kept; ++d)
        for (ptrdiff_t i = begin - d; i < smaller(begin, _s.end[inner] - d); ++i)
          _table.weigh(keptLine(i, d), lineOf(i), lineOf(i + d), n);
    for (ptrdiff_t i = begin; i < _s.end[inner]; ++i) {
      if (image::isStopped(_s)) return;
      load(i + _reach);
      for (ptrdiff_t c = 0; c < n; c += chunk) walkChunk(results + c, i, c, smaller(chunk, n - c));
      _info.storers[0](_info.targets[0], results, x, inner == 1 ? i : o, inner == 1 ? o : i, n);
    }
  }

  void walkChunk(float* results, ptrdiff_t i, ptrdiff_t c, ptrdiff_t n) const {
    Walked walked;
    const float* centres = samplesAt(i, c, 0);
    const ptrdiff_t read = roundUp(n, walkedAtOnce);
    for (ptrdiff_t k = 0; k < read; k += lanesOf<FloatV>) {
      storeVector(walked.weightSums + k, splat<FloatV>(1));
      storeVector(walked.sums + k, loadVector<FloatV>(centres + k));
    }
    for (int side = 1; side >= -1; side -= 2) {
      for (ptrdiff_t k = 0; k < read; k += lanesOf<FloatV>) storeVector(walked.running + k, splat<FloatV>(1));
      for (ptrdiff_t first = 1; first <= _l.half; first += block) {
        const ptrdiff_t count = smaller(block, _l.half - first + 1);
        const float *samples[block], *weights[block];
        for (ptrdiff_t k = 0; k < count; ++k) {
          const ptrdiff_t d = first + k;
          samples[k] = samplesAt(i, c, side * d);
          if (d > block) {
            float* const line = weightLine(_l.keptLines + k);
            _table.weigh(line, centres, samples[k], n);
            weights[k] = line;
          } else {
            weights[k] = side > 0 ? weighAhead(i, d, centres, samples[k], n) : weightsBehind(i, d);
          }
        }
        walked.add(samples, weights, _p.space + first, count, n);
      }
    }
    for (ptrdiff_t k = 0; k < n; k += lanesOf<FloatV>)
      storeVector(results + k,
                  loadVector<FloatV>(walked.sums + k) / loadVector<FloatV>(walked.weightSums + k));
  }

  float* lineOf(ptrdiff_t i) const {
    return reinterpret_cast<float*>(_info.scratch) + (i - _s.begin[inner] + _reach) % _l.lineCount * _l.pitch;
  }
  const float* samplesAt(ptrdiff_t i, ptrdiff_t c, ptrdiff_t d) const {
    return axis == 0 ? lineOf(i) + _l.half + c + d : lineOf(i + d) + c;
  }

  float* weightLine(ptrdiff_t line) const {
    return reinterpret_cast<float*>(_info.scratch + _l.weights) + line * _l.weightPitch;
  }
  /// The weights of row i and the one d further: a ring of d + 1 lines for each d.
  float* keptLine(ptrdiff_t i, ptrdiff_t d) const {
    return weightLine((d - 1) * (d + 2) / 2 + (i - _s.begin[inner] + d) % (d + 1));
  }
  /// The weights of what lies d ahead. Along X those of the d pixels before belong to the line.
  const float* weighAhead(ptrdiff_t i, ptrdiff_t d, const float* centres, const float* ahead,
                          ptrdiff_t n) const {
    float* const line = axis == 0 ? weightLine(d - 1) + block : keptLine(i, d);
    const ptrdiff_t before = axis == 0 ? d : 0;
    _table.weigh(line - before, centres - before, ahead - before, n + before);
    return line;
  }
  const float* weightsBehind(ptrdiff_t i, ptrdiff_t d) const {
    return axis == 0 ? weightLine(d - 1) + block - d : keptLine(i - d, d);
  }

  const processor::ProcessingInfo& _info;
  const image::StripSource& _s;
  const BilateralParameters& _p;
  const Table& _table;
  const WalkLayout _l;
  const ptrdiff_t _reach;
};

template <int axis, class Table>
inline void walkStrip(const processor::ProcessingInfo& info, const Table& table) {
  WalkStrip<axis, Table>(info, table).run();
}

template <int axis>
const char* walk(const processor::ProcessingInfo& info) {
  withRangeTable(*static_cast<const BilateralParameters*>(info.parameters),
                 [&](const auto& table) { walkStrip<axis>(info, table); });
  return nullptr;
}

template <int axis>
size_t walkScratchSize(const processor::ProcessingInfo& info) {
  return WalkLayout(info.sources[0], axis).end;
}

template <int axis>
constexpr processor::KernelTable makeWalkTable() {
  return makeFloatLineTable<eConversion::Saturate>(walk<axis>, walkScratchSize<axis>);
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
