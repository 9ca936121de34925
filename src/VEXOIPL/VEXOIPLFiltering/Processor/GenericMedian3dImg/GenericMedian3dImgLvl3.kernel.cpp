// Median of a box window, for one strip of volumes. The window of 3 x 3 x 3 voxels, the most common one, has
// a list of exchanges of its own.

#include "VEXOIPL/VEXOIPLFiltering/Median/BitSearch.h"
#include "VEXOIPL/VEXOIPLFiltering/Median/MedianNetwork.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class GenericMedian3dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

using processor::ProcessingInfo;

/// The median of the nineteen of a cube, sorted along its three axes, that have neither too many above nor
/// below them, in order of their places along z, y and x. Found by a search over lists of exchanges, checked
/// for all arrangements that a sorted cube allows; it comes out at index 9.
constexpr Network<41> selectOfNineteen = {
    {{2, 16}, {4, 14}, {7, 11}, {2, 4},  {4, 9},  {9, 11}, {9, 14}, {9, 16}, {4, 9},  {7, 9}, {9, 16},
     {0, 18}, {3, 15}, {5, 13}, {9, 14}, {5, 9},  {0, 9},  {9, 12}, {3, 9},  {9, 10}, {5, 9}, {9, 17},
     {0, 9},  {1, 15}, {6, 13}, {8, 13}, {9, 13}, {8, 15}, {9, 15}, {9, 18}, {1, 9},  {6, 9}, {9, 18},
     {3, 9},  {4, 9},  {2, 9},  {7, 9},  {8, 9},  {9, 11}, {9, 14}, {9, 16}}};

bool isSmallCube(const image::StripSource& s) {
  bool small = true;
  for (int axis = 0; axis < 3; ++axis) small = small && s.marginBefore[axis] == 1 && s.marginAfter[axis] == 1;
  return small;
}

/// Lines of a strip in scratch memory: three that are loaded, three rows of three sorted along z, nine sorted
/// along y as well, one of results.
struct CubeLines {
  unsigned char* first;
  size_t pitch;
  explicit CubeLines(const ProcessingInfo& info) : first(info.scratch) {
    const image::StripSource& s = info.sources[0];
    pitch = size_t(roundUp((s.end[0] - s.begin[0] + 2) * s.sampleSize, 64) + 192);
    if (pitch % 4096 < 64) pitch += 64;
  }
  static constexpr size_t count = 3 + 9 + 9 + 1;
  template <class Value>
  Value* get(ptrdiff_t i) const {
    return reinterpret_cast<Value*>(first + size_t(i) * pitch);
  }
};

/// The median of a cube whose columns along z and y are sorted, at the nine lines' places [x, x + 3).
template <class V, class Value>
inline V medianOfCube(Value* const (&lines)[9], ptrdiff_t x) {
  V candidates[19];
  int count = 0;
#pragma GCC unroll 9
  for (int i = 0; i < 9; ++i) {
    const int zPlace = i / 3, yPlace = i % 3;
    V row[3] = {loadRanks<V>(lines[i] + x), loadRanks<V>(lines[i] + x + 1), loadRanks<V>(lines[i] + x + 2)};
    apply<sortThree>(row);
#pragma GCC unroll 3
    for (int place = 0; place < 3; ++place) {
      const int below = (zPlace + 1) * (yPlace + 1) * (place + 1);
      const int above = (3 - zPlace) * (3 - yPlace) * (3 - place);
      if (below <= 14 && above <= 14) candidates[count++] = row[place];
    }
  }
  apply<selectOfNineteen>(candidates);
  return candidates[9];
}

template <class T>
[[gnu::noinline]] void cubeMedians(const ProcessingInfo& info, StoreSamples store) {
  using Value = typename Rank<T>::Type;
  using V = typename RankVector<T>::Type;
  constexpr ptrdiff_t lanes = sizeof(V) / sizeof(T);
  const image::StripSource& s = info.sources[0];
  const CubeLines all(info);
  const ptrdiff_t width = s.end[0] - s.begin[0];
  __builtin_memset(info.scratch, 0, CubeLines::count * all.pitch);  // what vectors read beyond the samples
  Value* const results = all.get<Value>(21);
  Value* sorted[9];
  for (int i = 0; i < 9; ++i) sorted[i] = all.get<Value>(12 + i);
  const auto sortedAlongZ = [&](ptrdiff_t y) { return 3 + 3 * ((y - s.begin[1] + 1) % 3); };
  const auto sortRow = [&](ptrdiff_t y, ptrdiff_t z) {
    for (int i = 0; i < 3; ++i) loadLine<T>(all.get<Rank<T>>(i), s, s.begin[0] - 1, y, z - 1 + i, width + 2);
    for (ptrdiff_t x = 0; x < width + 2; x += lanes) {
      V v[3];
      for (int i = 0; i < 3; ++i) v[i] = loadRanks<V>(all.get<Value>(i) + x);
      apply<sortThree>(v);
      for (int i = 0; i < 3; ++i) storeRanks(all.get<Value>(sortedAlongZ(y) + i) + x, v[i]);
    }
  };
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z) {
    sortRow(s.begin[1] - 1, z);
    sortRow(s.begin[1], z);
    for (ptrdiff_t y = s.begin[1]; y < s.end[1]; ++y) {
      if (image::isStopped(s)) return;
      sortRow(y + 1, z);
      for (int place = 0; place < 3; ++place)
        for (ptrdiff_t x = 0; x < width + 2; x += lanes) {
          V v[3];
          for (int i = 0; i < 3; ++i) v[i] = loadRanks<V>(all.get<Value>(3 + 3 * i + place) + x);
          apply<sortThree>(v);
          for (int i = 0; i < 3; ++i) storeRanks(sorted[3 * place + i] + x, v[i]);
        }
      for (ptrdiff_t x = 0; x < width; x += lanes)
        storeRanks(results + x, Rank<T>::flipped(medianOfCube<V>(sorted, x)));
      store(info.targets[0], all.get<unsigned char>(21), s.begin[0], y, z, width);
    }
  }
}

template <class TIn, class TOut>
struct GenericMedian3d {
  static const char* run(const ProcessingInfo& info) {
    if (!isSmallCube(info.sources[0])) return searchMedians<TIn>(info, storeSamples<TIn, TOut>);
    cubeMedians<TIn>(info, storeSamples<TIn, TOut>);
    return nullptr;
  }
};

size_t scratchSize(const ProcessingInfo& info) {
  return isSmallCube(info.sources[0]) ? CubeLines::count * CubeLines(info).pitch : searchScratchSize(info);
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::filter::GenericMedian3dImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeSampleTable<GenericMedian3d>(scratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
