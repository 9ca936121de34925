#pragma once

// Median in constant time per pixel: each column of the strip has a histogram of its rows of the window, kept
// from row to row, and the histogram of a window is the sum of those of its columns, kept from pixel to
// pixel.
//
// A histogram has 16 coarse counters, for the high half of a level, and 16 groups of 16 fine ones. The
// counters of each sixteen are cumulative: one more level counts in its own counter and in all above it. That
// costs one addition of a vector, as a plain counter would, and a search is a single comparison of sixteen
// counters: no sums. Only the coarse part is kept up to date for every pixel; a fine group is when a search
// comes to it.

#include <stddef.h>

#include "VEXOIPL/VEXOIPLFiltering/Median/LevelLines.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// Sixteen counters, in vectors that the set has.
template <class C>
struct Sixteen {
#if defined(__AVX512F__)
  static constexpr size_t widest = 64;
#elif defined(__AVX2__)
  static constexpr size_t widest = 32;
#else
  static constexpr size_t widest = 16;
#endif
  static constexpr size_t partSize = 16 * sizeof(C) < widest ? 16 * sizeof(C) : widest;
  static constexpr int partCount = int(16 * sizeof(C) / partSize);
  typedef C Part __attribute__((vector_size(partSize)));

  Part parts[partCount];

  static Sixteen read(const C* p) {
    Sixteen s;
    __builtin_memcpy(&s, p, sizeof s);
    return s;
  }
  void write(C* p) const {
    __builtin_memcpy(p, this, sizeof *this);
  }
  Sixteen& operator+=(const Sixteen& other) {
#pragma GCC unroll 4
    for (int i = 0; i < partCount; ++i) parts[i] += other.parts[i];
    return *this;
  }
  Sixteen& operator-=(const Sixteen& other) {
#pragma GCC unroll 4
    for (int i = 0; i < partCount; ++i) parts[i] -= other.parts[i];
    return *this;
  }
};

// The first counter that reaches the target; one does.
template <class C>
inline int firstAtLeast(const Sixteen<C>& counters, unsigned target) {
  C values[16];
  counters.write(values);
  int below = 0;
  for (int i = 0; i < 16; ++i) below += values[i] < target;
  return below;
}
#if defined(__AVX512F__)
inline int firstAtLeast(const Sixteen<unsigned>& counters, unsigned target) {
  return __builtin_ctz(_mm512_cmpge_epu32_mask(__m512i(counters.parts[0]), _mm512_set1_epi32(int(target))));
}
#endif
#if defined(__AVX2__)
inline int firstAtLeast(const Sixteen<unsigned short>& counters, unsigned target) {
  const __m256i wanted = _mm256_set1_epi16(short(target));
  const __m256i missing = _mm256_subs_epu16(wanted, __m256i(counters.parts[0]));
  return __builtin_ctz(unsigned(_mm256_movemask_epi8(_mm256_cmpeq_epi16(missing, _mm256_setzero_si256())))) /
         2;
}
#elif defined(__SSE2__)
inline int firstAtLeast(const Sixteen<unsigned short>& counters, unsigned target) {
  const __m128i wanted = _mm_set1_epi16(short(target)), zero = _mm_setzero_si128();
  const __m128i low = _mm_cmpeq_epi16(_mm_subs_epu16(wanted, __m128i(counters.parts[0])), zero);
  const __m128i high = _mm_cmpeq_epi16(_mm_subs_epu16(wanted, __m128i(counters.parts[1])), zero);
  return __builtin_ctz(unsigned(_mm_movemask_epi8(_mm_packs_epi16(low, high))));
}
#endif
#if defined(__SSE2__)
inline int firstAtLeast(const Sixteen<unsigned char>& counters, unsigned target) {
  const __m128i missing = _mm_subs_epu8(_mm_set1_epi8(char(target)), __m128i(counters.parts[0]));
  return __builtin_ctz(unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(missing, _mm_setzero_si128()))));
}
#endif

/// Where everything of a strip lies in the scratch memory.
struct ColumnLayout {
  ptrdiff_t width, knlX, knlY, columns, lineCount;
  unsigned count;  ///< samples of a window
  int counterSize;
  size_t pitch;  ///< of a line of levels
  size_t coarse, fine, lines, samples, results, end;

  explicit ColumnLayout(const image::StripSource& s)
      : width(s.end[0] - s.begin[0]),
        knlX(s.marginBefore[0] + s.marginAfter[0] + 1),
        knlY(s.marginBefore[1] + s.marginAfter[1] + 1),
        columns(width + knlX - 1),
        lineCount(smaller(knlY + 1, s.size[1])),
        count(unsigned(knlX) * unsigned(knlY)),
        counterSize(count < 256     ? 1
                    : count < 65536 ? 2
                                    : 4),
        pitch(size_t(roundUp(columns, 64))),
        coarse(0),
        fine(size_t(columns * 16 * counterSize)),
        lines(17 * fine),
        samples(lines + size_t(lineCount) * pitch),
        results(samples + size_t(roundUp(columns * s.sampleSize, 64))),
        end(results + pitch) {}
};

template <class C>
class ColumnHistograms {
public:
  explicit ColumnHistograms(const ColumnLayout& layout, unsigned char* scratch)
      : _columns(layout.columns),
        _coarse(reinterpret_cast<C*>(scratch + layout.coarse)),
        _fine(reinterpret_cast<C*>(scratch + layout.fine)) {
    for (int level = 0; level < 16; ++level)
      for (int i = 0; i < 16; ++i) _one[level][i] = i >= level;
  }
  void clear() { __builtin_memset(_coarse, 0, size_t(17 * 16 * _columns) * sizeof(C)); }
  /// One more row in each column.
  void add(const unsigned char* entering) {
    for (ptrdiff_t x = 0; x < _columns; ++x) {
      const int e = entering[x];
      update(_coarse + 16 * x, [&](auto& counters) { counters += one(e >> 4); });
      update(fine(e >> 4, x), [&](auto& counters) { counters += one(e & 15); });
    }
  }
  /// One row for another.
  void replace(const unsigned char* entering, const unsigned char* leaving) {
    for (ptrdiff_t x = 0; x < _columns; ++x) {
      const int e = entering[x], l = leaving[x];
      update(_coarse + 16 * x, [&](auto& counters) {
        counters += one(e >> 4);
        counters -= one(l >> 4);
      });
      update(fine(e >> 4, x), [&](auto& counters) { counters += one(e & 15); });
      update(fine(l >> 4, x), [&](auto& counters) { counters -= one(l & 15); });
    }
  }
  /// The median levels of a row: window i has the columns [i, i + knlX).
  void findMedians(unsigned char* medians, ptrdiff_t width, ptrdiff_t knlX, unsigned target) const {
    C coarse[17] = {}, group[16][16];  // coarse[0]: nothing is below the first group
    ptrdiff_t upTo[16];                // the window that a group is of
    for (ptrdiff_t& window : upTo) window = -knlX;
    Counters sum = Counters::read(_coarse);
    for (ptrdiff_t x = 1; x < knlX; ++x) sum += Counters::read(_coarse + 16 * x);
    for (ptrdiff_t x = 0; x < width; ++x) {
      if (x > 0) {
        sum += Counters::read(_coarse + 16 * (x + knlX - 1));
        sum -= Counters::read(_coarse + 16 * (x - 1));
      }
      sum.write(coarse + 1);
      const int high = firstAtLeast(sum, target);
      const C* columns = fine(high, 0);
      Counters part = {};
      ptrdiff_t window = upTo[high];
      if (2 * (x - window) > knlX) {  // less work to sum it up again
        for (ptrdiff_t i = x; i < x + knlX; ++i) part += Counters::read(columns + 16 * i);
      } else {
        part = Counters::read(group[high]);
        for (; window < x; ++window) {
          part += Counters::read(columns + 16 * (window + knlX));
          part -= Counters::read(columns + 16 * window);
        }
      }
      part.write(group[high]);
      upTo[high] = x;
      medians[x] = (unsigned char)(16 * high + firstAtLeast(part, target - coarse[high]));
    }
  }

private:
  using Counters = Sixteen<C>;

  template <class Change>
  static void update(C* p, Change change) {
    Counters counters = Counters::read(p);
    change(counters);
    counters.write(p);
  }
  Counters one(int level) const { return Counters::read(_one[level]); }
  C* fine(int high, ptrdiff_t x) const { return _fine + 16 * (high * _columns + x); }

  const ptrdiff_t _columns;
  C* const _coarse;  ///< [column][16]
  C* const _fine;    ///< [group][column][16]
  C _one[16][16];    ///< what a level adds
};

/// All pixels of the strip. Each row of the image is loaded once.
template <class C>
[[gnu::noinline]] void findColumnMedians(const processor::ProcessingInfo& info, LoadLevels load,
                                         StoreLevels store) {
  const image::StripSource& s = info.sources[0];
  const LevelMap& map = *static_cast<const LevelMap*>(info.parameters);
  const ColumnLayout l(s);
  ColumnHistograms<C> histograms(l, info.scratch);
  // Mirrored rows are those of the image, which the window still holds: each is loaded once, and never after
  // it may have been written over.
  const auto lineOf = [&](ptrdiff_t y) {
    const ptrdiff_t row = image::mapBorderIndex(image::eBorder::Mirror, y, s.size[1]);
    return info.scratch + l.lines + size_t(row % l.lineCount) * l.pitch;
  };
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z) {
    ptrdiff_t next = larger(s.begin[1] - s.marginBefore[1], 0);  // row to load
    const auto loadUpTo = [&](ptrdiff_t y) {
      for (; next <= smaller(y, s.size[1] - 1); ++next)
        load(lineOf(next), info.scratch + l.samples, map, s, s.begin[0] - s.marginBefore[0], next, z,
             l.columns);
    };
    histograms.clear();
    loadUpTo(s.begin[1] + s.marginAfter[1]);
    for (ptrdiff_t y = s.begin[1] - s.marginBefore[1]; y <= s.begin[1] + s.marginAfter[1]; ++y)
      histograms.add(lineOf(y));
    for (ptrdiff_t y = s.begin[1]; y < s.end[1]; ++y) {
      if (image::isStopped(s)) return;
      if (y > s.begin[1]) {
        loadUpTo(y + s.marginAfter[1]);
        histograms.replace(lineOf(y + s.marginAfter[1]), lineOf(y - 1 - s.marginBefore[1]));
      }
      histograms.findMedians(info.scratch + l.results, l.width, l.knlX, l.count / 2 + 1);
      store(info.targets[0], info.scratch + l.results, map, y, z);
    }
  }
}

template <class TIn, class TOut>
struct ColumnMedian {
  static const char* run(const processor::ProcessingInfo& info) {
    switch (ColumnLayout(info.sources[0]).counterSize) {
      case 1:
        return findColumnMedians<unsigned char>(info, loadLevels<TIn>, storeLevels<sizeof(TOut)>), nullptr;
      case 2:
        return findColumnMedians<unsigned short>(info, loadLevels<TIn>, storeLevels<sizeof(TOut)>), nullptr;
      default:
        return findColumnMedians<unsigned>(info, loadLevels<TIn>, storeLevels<sizeof(TOut)>), nullptr;
    }
  }
};

inline size_t columnScratchSize(const processor::ProcessingInfo& info) {
  return ColumnLayout(info.sources[0]).end;
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
