// Median of 5 x 5 samples, for one strip of planes.
//
// First each column of five is sorted, once for the five windows that hold it; then each row of the sorted
// columns, as far as it matters. Thirteen values remain that may be the median: all others have too many
// above or below them.

#include "VEXOIPL/VEXOIPLFiltering/Median/MedianNetwork.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class K55Median2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

using processor::ProcessingInfo;

/// The median of the thirteen in order of their rows: the two highest of the lowest row, the three highest,
/// middle and lowest of the rows between, the two lowest of the highest row. Found by a search over lists of
/// exchanges, checked for all arrangements that sorted rows and columns allow; it comes out at index 6.
constexpr Network<20> selectOfThirteen = {{{1, 11}, {3, 9},   {9, 11}, {6, 9},  {3, 6}, {1, 6}, {6, 9},
                                           {4, 8},  {10, 12}, {0, 10}, {6, 10}, {2, 6}, {6, 8}, {5, 6},
                                           {0, 6},  {6, 10},  {6, 7},  {4, 6},  {6, 7}, {6, 8}}};

/// Sorted columns of a piece of two rows, short enough for the nearest cache.
template <class T>
struct SortedColumns {
  using Value = typename Rank<T>::Type;
  using V = typename RankVector<T>::Type;
  static constexpr ptrdiff_t lanes = sizeof(V) / sizeof(T);
  static constexpr ptrdiff_t length = 2048 / sizeof(T);
  static constexpr ptrdiff_t pitch = length + 2 * lanes;
  Value lines[2][5][pitch];

  /// Sorts columns [x, x + n) of the lines, and those of the margin after them.
  void sort(const Value* const (&rows)[6], ptrdiff_t x, ptrdiff_t n) {
    for (ptrdiff_t i = 0; i < n + 4; i += lanes) {
      V shared[4];
#pragma GCC unroll 4
      for (int r = 0; r < 4; ++r) shared[r] = loadRanks<V>(rows[r + 1] + x + i);
      apply<sortFour>(shared);
#pragma GCC unroll 2
      for (int row = 0; row < 2; ++row) {
        V column[5] = {shared[0], shared[1], shared[2], shared[3], loadRanks<V>(rows[5 * row] + x + i)};
        apply<insertFromBelow>(column);
#pragma GCC unroll 5
        for (int r = 0; r < 5; ++r) storeRanks(lines[row][r] + i, column[r]);
      }
    }
  }

  V median(int row, ptrdiff_t i) const {
    V candidates[13];
    const auto keep = [&](int r, int to, const auto& sortRow) {
      V v[5];
#pragma GCC unroll 5
      for (int c = 0; c < 5; ++c) v[c] = loadRanks<V>(lines[row][r] + i + c);
      apply<sortFour>(v);
      sortRow(v, candidates + to);
    };
    keep(0, 0, [](V* v, V* to) {
      apply<insertFromAbove>(v);
      to[0] = v[2], to[1] = v[3];
    });
    keep(1, 2, [](V* v, V* to) {
      apply<insertFromAbove>(v);
      to[0] = v[1], to[1] = v[2], to[2] = v[3];
    });
    keep(2, 5, [](V* v, V* to) {
      apply<insertFromBelow>(v);
      to[0] = v[1], to[1] = v[2], to[2] = v[3];
    });
    keep(3, 8, [](V* v, V* to) {
      apply<insertFromBelow>(v);
      to[0] = v[0], to[1] = v[1], to[2] = v[2];
    });
    keep(4, 11, [](V* v, V* to) {
      apply<insertFromBelow>(v);
      to[0] = v[0], to[1] = v[1];
    });
    apply<selectOfThirteen>(candidates);
    return candidates[6];
  }
};

// Not inlined: one for all output types.
template <class T>
[[gnu::noinline]] const char* runMedians(const ProcessingInfo& info, StoreSamples store) {
  using Columns = SortedColumns<T>;
  using Value = typename Rank<T>::Type;
  Columns columns;
  MedianLines<T, 2>::run(info, store,
                         [&](const Value* const(&rows)[6], Value* const(&results)[2], ptrdiff_t width) {
                           for (ptrdiff_t x = 0; x < width; x += Columns::length) {
                             const ptrdiff_t n = smaller(Columns::length, width - x);
                             columns.sort(rows, x, n);
                             for (int row = 0; row < 2; ++row)
                               for (ptrdiff_t i = 0; i < n; i += Columns::lanes)
                                 storeRanks(results[row] + x + i, Rank<T>::flipped(columns.median(row, i)));
                           }
                         });
  return nullptr;
}

template <class TIn, class TOut>
struct K55Median {
  static const char* run(const ProcessingInfo& info) {
    return runMedians<TIn>(info, storeSamples<TIn, TOut>);
  }
};

size_t scratchSize(const ProcessingInfo& info) {
  return MedianLines<float, 2>::lineCount * MedianLines<float, 2>::pitch(info.sources[0]);
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::filter::K55Median2dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeSampleTable<K55Median>(scratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
