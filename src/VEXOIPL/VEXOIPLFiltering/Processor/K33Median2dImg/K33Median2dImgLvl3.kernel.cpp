// Median of 3 x 3 samples, for one strip of planes.

#include "VEXOIPL/VEXOIPLFiltering/Median/MedianNetwork.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class K33Median2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

using processor::ProcessingInfo;

/// The median of nine, of three sorted columns: that of the highest low, the middle middle and the lowest
/// high.
template <class V>
inline V medianOfColumns(const V (&columns)[3][3]) {
  const V low = higher(higher(columns[0][0], columns[1][0]), columns[2][0]);
  const V middle = medianOfThree(columns[0][1], columns[1][1], columns[2][1]);
  const V high = lower(lower(columns[0][2], columns[1][2]), columns[2][2]);
  return medianOfThree(low, middle, high);
}

/// Two rows, which have two of their three rows in common: these are sorted once.
template <class T>
void medians(const typename Rank<T>::Type* const (&rows)[4], typename Rank<T>::Type* const (&results)[2],
             ptrdiff_t width) {
  using V = typename RankVector<T>::Type;
  constexpr ptrdiff_t lanes = sizeof(V) / sizeof(T);
  for (ptrdiff_t x = 0; x < width; x += lanes) {
    V upper[3][3], under[3][3];
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) {
      V a = loadRanks<V>(rows[1] + x + i), b = loadRanks<V>(rows[2] + x + i);
      exchange(a, b);
      upper[i][0] = loadRanks<V>(rows[0] + x + i);
      upper[i][1] = under[i][1] = a;
      upper[i][2] = under[i][2] = b;
      under[i][0] = loadRanks<V>(rows[3] + x + i);
      exchange(upper[i][0], upper[i][1]);
      exchange(upper[i][1], upper[i][2]);
      exchange(under[i][0], under[i][1]);
      exchange(under[i][1], under[i][2]);
    }
    storeRanks(results[0] + x, Rank<T>::flipped(medianOfColumns(upper)));
    storeRanks(results[1] + x, Rank<T>::flipped(medianOfColumns(under)));
  }
}

// Not inlined: one for all output types.
template <class T>
[[gnu::noinline]] const char* runMedians(const ProcessingInfo& info, StoreSamples store) {
  MedianLines<T, 1>::run(info, store, medians<T>);
  return nullptr;
}

template <class TIn, class TOut>
struct K33Median {
  static const char* run(const ProcessingInfo& info) {
    return runMedians<TIn>(info, storeSamples<TIn, TOut>);
  }
};

size_t scratchSize(const ProcessingInfo& info) {
  return MedianLines<float, 1>::lineCount * MedianLines<float, 1>::pitch(info.sources[0]);
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::filter::K33Median2dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeSampleTable<K33Median>(scratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
