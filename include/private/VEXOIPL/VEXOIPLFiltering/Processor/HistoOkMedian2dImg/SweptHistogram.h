#pragma once

// Median of a window by one histogram that is swept along the rows: at each pixel the samples that enter and
// leave the window are counted, one by one.

#include <stddef.h>

#include "VEXOIPL/VEXOIPLFiltering/Median/LevelLines.h"
#include "VEXOProcessing/Kernel/WindowLines.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// The window, and where everything of a strip lies in the scratch memory.
struct SweepLayout : WindowLines {
  size_t pitch;  ///< of a line of levels
  size_t samples, results, end;

  explicit SweepLayout(const image::StripSource& s)
      : WindowLines(s),
        pitch(size_t(roundUp(lineLength, 64))),
        samples(size_t(lineCount) * pitch),
        results(samples + pitch * size_t(s.sampleSize)),
        end(results + pitch) {}
};

/// 256 counters of levels and 16 of their groups. As they are counted one at a time, their width makes no
/// difference to the time: two widths serve all windows.
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

/// All pixels of the strip.
template <class C>
[[gnu::noinline]] void sweepMedians(const processor::ProcessingInfo& info, LoadLevels load,
                                    StoreLevels store) {
  const LevelMap& map = *static_cast<const LevelMap*>(info.parameters);
  const SweepLayout l(info.sources[0]);
  const C target = C(l.count / 2 + 1);
  unsigned char* const lines = info.scratch;
  unsigned char* const results = info.scratch + l.results;
  l.run(
      [&](ptrdiff_t line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z) {
        load(lines + size_t(line) * l.pitch, info.scratch + l.samples, map, l.source, x, y, z, l.lineLength);
      },
      [&](ptrdiff_t y, ptrdiff_t z) {
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
      });
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
