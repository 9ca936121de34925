#pragma once

// Median of a window by one histogram that is swept along the rows: at each pixel the samples that enter and
// leave the window are counted, one by one.

#include <stddef.h>

#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/Levels.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// The window, and where everything of a strip lies in the scratch memory: the rows of the window of each of
/// its slices as lines of levels.
struct SweepLayout {
  ptrdiff_t width, knlX, knlY, lineCount;
  unsigned long long count;  ///< samples of the window
  size_t pitch;              ///< of a line
  size_t lines, samples, results, end;

  explicit SweepLayout(const image::StripSource& s)
      : width(s.end[0] - s.begin[0]),
        knlX(s.marginBefore[0] + s.marginAfter[0] + 1),
        knlY(s.marginBefore[1] + s.marginAfter[1] + 1),
        lineCount(knlY * (s.marginBefore[2] + s.marginAfter[2] + 1)),
        count(static_cast<unsigned long long>(lineCount) * static_cast<unsigned long long>(knlX)),
        pitch(size_t(roundUp(width + knlX - 1, 64))),
        lines(0),
        samples(size_t(lineCount) * pitch),
        results(samples + pitch * size_t(s.sampleSize)),
        end(results + pitch) {}
};

/// 256 counters of levels and 16 of their groups.
template <class C>
class Histogram {
public:
  void add(unsigned char level) {
    ++_fine[level];
    ++_coarse[level >> 4];
  }
  void remove(unsigned char level) {
    --_fine[level];
    --_coarse[level >> 4];
  }
  /// The lowest level up to which there are `target` samples.
  unsigned char find(C target) const {
    int high = 0, level = 0;
    for (; target > _coarse[high]; ++high) target -= _coarse[high];
    for (level = 16 * high; target > _fine[level]; ++level) target -= _fine[level];
    return (unsigned char)level;
  }

private:
  C _fine[256] = {}, _coarse[16] = {};
};

/// All pixels of the strip. Rows are loaded once per slice.
template <class C>
[[gnu::noinline]] void sweepMedians(const processor::ProcessingInfo& info, LoadLevels load,
                                    StoreLevels store) {
  const image::StripSource& s = info.sources[0];
  const LevelMap& map = *static_cast<const LevelMap*>(info.parameters);
  const SweepLayout l(s);
  const C target = C(l.count / 2 + 1);
  unsigned char* const lines = info.scratch + l.lines;
  unsigned char* const results = info.scratch + l.results;
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z) {
    const auto loadRows = [&](ptrdiff_t y) {
      ptrdiff_t slot = (y - s.begin[1] + s.marginBefore[1]) % l.knlY;
      for (ptrdiff_t i = -s.marginBefore[2]; i <= s.marginAfter[2]; ++i, slot += l.knlY)
        load(lines + size_t(slot) * l.pitch, info.scratch + l.samples, map, s, s.begin[0] - s.marginBefore[0],
             y, z + i, l.width + l.knlX - 1);
    };
    for (ptrdiff_t y = -s.marginBefore[1]; y < s.marginAfter[1]; ++y) loadRows(s.begin[1] + y);
    for (ptrdiff_t y = s.begin[1]; y < s.end[1]; ++y) {
      loadRows(y + s.marginAfter[1]);
      Histogram<C> histogram;
      for (ptrdiff_t i = 0; i < l.lineCount; ++i)
        for (ptrdiff_t x = 0; x < l.knlX; ++x) histogram.add(lines[size_t(i) * l.pitch + size_t(x)]);
      results[0] = histogram.find(target);
      for (ptrdiff_t x = 1; x < l.width; ++x) {
        const unsigned char* leaving = lines + x - 1;
        for (ptrdiff_t i = 0; i < l.lineCount; ++i, leaving += l.pitch) {
          histogram.add(leaving[l.knlX]);
          histogram.remove(leaving[0]);
        }
        results[x] = histogram.find(target);
      }
      store(info.targets[0], results, map, y, z);
    }
  }
}

template <class TIn, class TOut>
struct SweptMedian {
  static const char* run(const processor::ProcessingInfo& info) {
    const unsigned long long count = SweepLayout(info.sources[0]).count;
    if (count < 65536)
      sweepMedians<unsigned short>(info, loadLevels<TIn>, storeLevels<sizeof(TOut)>);
    else
      sweepMedians<unsigned long long>(info, loadLevels<TIn>, storeLevels<sizeof(TOut)>);
    return nullptr;
  }
};

inline size_t sweepScratchSize(const processor::ProcessingInfo& info) {
  return SweepLayout(info.sources[0]).end;
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
