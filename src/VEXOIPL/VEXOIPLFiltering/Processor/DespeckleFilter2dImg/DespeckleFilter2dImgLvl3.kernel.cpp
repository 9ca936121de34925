// Replacement of outliers by the mean of their neighbours, for one strip of rows.
//
// The sums over windows and of their squares are kept undivided: for integers of up to 16 bits, and where all
// samples of a window are equal, they are then exact, and so is the comparison that they decide. Sums along a
// row are built by doubling (of 1, 2, 4 ... samples, joined to the width of the window), which has no serial
// chain and, unlike a running sum, carries a NaN no further than its window. A ring holds those of the rows
// of the window.

#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/Lines.h"
#include "VEXOProcessing/Kernel/Vector.h"

namespace vexo::imaproc::filter {
class DespeckleFilter2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {
namespace {

using processor::ProcessingInfo;

using DoubleV = double __attribute__((vector_size(sizeof(FloatV))));
using LongV = long long __attribute__((vector_size(sizeof(FloatV))));
constexpr ptrdiff_t lanes = sizeof(DoubleV) / sizeof(double);
constexpr int vectors = 4;  ///< that run side by side
constexpr ptrdiff_t atOnce = vectors * lanes;
constexpr ptrdiff_t lineAlignment = 32;      ///< of lines, in doubles: a vector group may run over their end
constexpr ptrdiff_t ringDoubles = 5 * 1024;  ///< of sums stay in the first-level cache
constexpr ptrdiff_t wholeCacheLines = 64;    ///< samples of any type
constexpr ptrdiff_t narrowest = 128, widest = 1024;
constexpr ptrdiff_t mostAddedSingly = 9;

inline DoubleV loadDoubles(const double* p) {
  DoubleV v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}
inline void storeDoubles(double* p, DoubleV v) {
  __builtin_memcpy(p, &v, sizeof v);
}

/// The tiles of columns that a strip is run in, and their lines in the scratch memory, in doubles.
struct Layout {
  ptrdiff_t knlSizeX, knlSizeY;
  ptrdiff_t width;   ///< columns of a tile; in place, where a neighbour's margins may be written over, all
  ptrdiff_t pitch;   ///< of the lines of the ring
  ptrdiff_t padded;  ///< of the lines with the margins of the window

  explicit Layout(const ProcessingInfo& info) {
    const image::StripSource& s = info.sources[0];
    knlSizeX = s.marginBefore[0] + s.marginAfter[0] + 1;
    knlSizeY = s.marginBefore[1] + s.marginAfter[1] + 1;
    const ptrdiff_t all = s.end[0] - s.begin[0];
    const ptrdiff_t tile = clamp(ringDoubles / (2 * knlSizeY), narrowest, widest);
    width = info.inPlace ? all : smaller(all, tile / wholeCacheLines * wholeCacheLines);
    pitch = roundUp(width, lineAlignment);
    padded = pitch + roundUp(knlSizeX + lanes, lineAlignment);  // vectors are read at any offset
  }
  /// Per row of the window: samples, sums and sums of squares. And three lines with margins.
  ptrdiff_t scratchDoubles() const { return 3 * knlSizeY * pitch + 3 * padded; }
};

size_t scratchSize(const ProcessingInfo& info) {
  return size_t(Layout(info).scratchDoubles()) * sizeof(double);
}

/// Sums of 8 and 16-bit samples are exact: a pixel can be taken out of those of its window. Sums of others
/// leave it out from the start: one far larger than its neighbours would cost them their bits.
template <class T>
constexpr bool hasExactSums = sizeof(T) < 4;

/// The sums of windows of n columns, and those of their squares, in whole vectors: sums[i] = line[i] + ... +
/// line[i + knlSize - 1], on demand but for the middle one. For few samples, added one by one in registers.
template <bool withMiddle>
void sumSingly(double* sums, double* squares, const double* line, ptrdiff_t knlSize, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; i += atOnce) {
    DoubleV sum[vectors] = {}, square[vectors] = {};
    for (ptrdiff_t j = 0; j < knlSize; ++j) {
      if (!withMiddle && j == knlSize / 2) continue;
#pragma GCC unroll 4
      for (int v = 0; v < vectors; ++v) {
        const DoubleV value = loadDoubles(line + i + j + v * lanes);
        sum[v] += value;
        square[v] += value * value;
      }
    }
#pragma GCC unroll 4
    for (int v = 0; v < vectors; ++v) {
      storeDoubles(sums + i + v * lanes, sum[v]);
      storeDoubles(squares + i + v * lanes, square[v]);
    }
  }
}

/// sums[i] = line[i] + ... + line[i + knlSize - 1], for more samples. Spoils the line.
void sumByDoubling(double* sums, double* line, ptrdiff_t knlSize, ptrdiff_t n) {
  ptrdiff_t offset = 0;  // of the samples that are not yet in the sums
  for (ptrdiff_t size = 1;; size *= 2) {
    // The line holds sums of `size` samples.
    if (knlSize & size) {
      for (ptrdiff_t i = 0; i < n; i += lanes) {
        const DoubleV part = loadDoubles(line + i + offset);
        storeDoubles(sums + i, offset == 0 ? part : loadDoubles(sums + i) + part);
      }
      offset += size;
    }
    if (offset == knlSize) return;
    for (ptrdiff_t i = 0; i < n + knlSize - 2 * size; i += lanes)
      storeDoubles(line + i, loadDoubles(line + i) + loadDoubles(line + i + size));
  }
}

/// The same but for the middle one: those before and those after the middle one. Spoils both lines.
void sumHalves(double* sums, double* halves, double* line, ptrdiff_t knlSize, ptrdiff_t n) {
  const ptrdiff_t half = knlSize / 2;
  sumByDoubling(halves, line, half, n + half + 1);
  for (ptrdiff_t i = 0; i < n; i += lanes)
    storeDoubles(sums + i, loadDoubles(halves + i) + loadDoubles(halves + i + half + 1));
}

template <class T>
constexpr bool isFloat = false;
template <>
constexpr bool isFloat<float> = true;

template <class T>
class Despeckle {
public:
  explicit Despeckle(const ProcessingInfo& info)
      : _info(info),
        _source(info.sources[0]),
        _layout(info),
        _squaredFactor(squareOf(*static_cast<const double*>(info.parameters))),
        _neighbours(double(_layout.knlSizeX) * double(_layout.knlSizeY) - 1) {
    _values = reinterpret_cast<double*>(info.scratch);
    _sums = _values + _layout.knlSizeY * _layout.pitch;
    _squares = _sums + _layout.knlSizeY * _layout.pitch;
    _line = _squares + _layout.knlSizeY * _layout.pitch;
    _squaredLine = _line + _layout.padded;
    _spareLine = _squaredLine + _layout.padded;
  }

  void runTile(ptrdiff_t x, ptrdiff_t z) const {
    const ptrdiff_t width = smaller(_layout.width, _source.end[0] - x);
    const ptrdiff_t before = _source.marginBefore[1], after = _source.marginAfter[1];
    ptrdiff_t slot = 0;
    for (ptrdiff_t y = _source.begin[1] - before; y < _source.end[1] + after; ++y) {
      if (image::isStopped(_source)) return;
      loadRow(x, y, z, width, slot);
      const ptrdiff_t completed = y - after;  // the row whose window ends here
      if (completed >= _source.begin[1]) {
        ptrdiff_t centre = slot - after;
        if (centre < 0) centre += _layout.knlSizeY;
        computeRow(centre, width);
        storeRow(x, completed, z, width);
      }
      slot = slot + 1 == _layout.knlSizeY ? 0 : slot + 1;
    }
  }

private:
  /// 0, which replaces nothing, for factors that are not positive.
  static double squareOf(double factor) { return factor > 0 ? factor * factor : 0; }

  void loadRow(ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t width, ptrdiff_t slot) const {
    const ptrdiff_t n = width + _layout.knlSizeX - 1;
    prefetchRow(x, y + 1, z, width);
    loadLine<T>(_line, _source, x - _source.marginBefore[0], y, z, n);
    for (ptrdiff_t i = n; i < _layout.padded; ++i) _line[i] = 0;
    double *sums = _sums + slot * _layout.pitch, *squares = _squares + slot * _layout.pitch;
    __builtin_memcpy(_values + slot * _layout.pitch, _line + _source.marginBefore[0],
                     size_t(width) * sizeof(double));
    if (_layout.knlSizeX <= mostAddedSingly)
      return sumSingly<hasExactSums<T>>(sums, squares, _line, _layout.knlSizeX, width);
    for (ptrdiff_t i = 0; i < _layout.padded; ++i) _squaredLine[i] = _line[i] * _line[i];
    sumLine(sums, _line, width);
    sumLine(squares, _squaredLine, width);
  }
  void sumLine(double* sums, double* line, ptrdiff_t width) const {
    if constexpr (hasExactSums<T>)
      sumByDoubling(sums, line, _layout.knlSizeX, width);
    else
      sumHalves(sums, _spareLine, line, _layout.knlSizeX, width);
  }

  void prefetchRow(ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t width) const {
    const unsigned char* row = image::sourceRow(_source, y, z) + x * ptrdiff_t(sizeof(T));
    for (ptrdiff_t i = 0; i < width * ptrdiff_t(sizeof(T)); i += 64) __builtin_prefetch(row + i, 0, 2);
  }

  /// The results of a row, in the spare line. Dividing everywhere costs less than finding out where.
  void computeRow(ptrdiff_t centre, ptrdiff_t width) const {
    const ptrdiff_t pitch = _layout.pitch, knlSizeY = _layout.knlSizeY;
    const double* values = _values + centre * pitch;
    const DoubleV count = _neighbours - DoubleV{}, factor = _squaredFactor - DoubleV{};
    for (ptrdiff_t x = 0; x < width; x += atOnce) {
      DoubleV sum[vectors] = {}, squares[vectors] = {};
      for (ptrdiff_t row = 0; row < knlSizeY; ++row) {
#pragma GCC unroll 4
        for (int i = 0; i < vectors; ++i) {
          sum[i] += loadDoubles(_sums + row * pitch + x + i * lanes);
          squares[i] += loadDoubles(_squares + row * pitch + x + i * lanes);
        }
        if (hasExactSums<T> || row == centre) continue;
#pragma GCC unroll 4
        for (int i = 0; i < vectors; ++i) {
          const DoubleV v = loadDoubles(_values + row * pitch + x + i * lanes);
          sum[i] += v;
          squares[i] += v * v;
        }
      }
#pragma GCC unroll 4
      for (int i = 0; i < vectors; ++i) {
        const DoubleV v = loadDoubles(values + x + i * lanes);
        if constexpr (hasExactSums<T>) {
          sum[i] -= v;
          squares[i] -= v * v;
        }
        // Both sides of "factor * |v - mean| > deviation", times the number of neighbours, squared: no
        // division, and exact for small integers. False when a NaN takes part (a NaN or an infinity among
        // the neighbours); a variance that rounding made negative decides nothing either.
        const DoubleV variance = squares[i] * count - sum[i] * sum[i];
        const DoubleV distance = v * count - sum[i];
        const LongV finite = v - v == 0;
        const LongV replaced = (factor * (distance * distance) > variance) & (variance >= 0) & finite;
        storeDoubles(_spareLine + x + i * lanes, replaced ? sum[i] / count : v);
      }
    }
  }

  void storeRow(ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t width) const {
    const image::StripTarget& t = _info.targets[0];
    const double* values = _spareLine;
    if constexpr (isFloat<T>) {
      float* line = reinterpret_cast<float*>(_line);
      for (ptrdiff_t i = 0; i < width; ++i) line[i] = float(values[i]);
      return storeFloatLine(t, line, x, y, z, width);
    }
    unsigned char* row = image::targetRow(t, y, z) + (x - t.begin[0]) * ptrdiff_t(sizeof(T));
    for (ptrdiff_t i = 0; i < width; ++i) {
      const T value = T(values[i]);
      __builtin_memcpy(row + i * ptrdiff_t(sizeof value), &value, sizeof value);
    }
  }

  const ProcessingInfo& _info;
  const image::StripSource& _source;
  const Layout _layout;
  const double _squaredFactor, _neighbours;
  double *_values, *_sums, *_squares, *_line, *_squaredLine, *_spareLine;
};

template <class T>
const char* despeckle(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  const Despeckle<T> run(info);
  const ptrdiff_t width = Layout(info).width;
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
    for (ptrdiff_t x = s.begin[0]; x < s.end[0]; x += width) run.runTile(x, z);
  return nullptr;
}

constexpr processor::KernelTable makeTable() {
  processor::KernelTable table = {};
  table.scratchSize = scratchSize;
  table.functions[6][6] = despeckle<float>;
#if !defined(VEXO_KERNEL_SET_avx)  // which has no integer vectors
  table.functions[0][0] = despeckle<unsigned char>;
  table.functions[1][1] = despeckle<signed char>;
  table.functions[2][2] = despeckle<unsigned short>;
  table.functions[3][3] = despeckle<short>;
  table.functions[4][4] = despeckle<unsigned>;
  table.functions[5][5] = despeckle<int>;
#endif
  return table;
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::filter::DespeckleFilter2dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeTable();
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
