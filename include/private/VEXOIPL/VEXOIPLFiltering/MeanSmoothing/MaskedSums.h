#pragma once

// Sums over windows of the samples whose mask is set, and the number of these samples: what the masked means
// of planes and volumes share. The sums are those of RunningSum.h, of samples that are 0 where the mask is
// clear. The numbers are exact, so they may be had in any order: running sums down each column, and along the
// row differences of their prefix sums.

#include "VEXOProcessing/Kernel/RunningSum.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

using UIntV = unsigned __attribute__((vector_size(sizeof(FloatV))));
using ShortSumV = unsigned short __attribute__((vector_size(sizeof(FloatV))));
using HalfShortV = unsigned short __attribute__((vector_size(sizeof(FloatV) / 2)));

/// The lanes moved up by k places, zeros below.
template <int k>
inline UIntV moveUp(UIntV v) {
  constexpr int s = lanesOf<FloatV> - k;
#if defined(__AVX512F__)
  return __builtin_shufflevector(UIntV{}, v, s, s + 1, s + 2, s + 3, s + 4, s + 5, s + 6, s + 7, s + 8, s + 9,
                                 s + 10, s + 11, s + 12, s + 13, s + 14, s + 15);
#elif defined(__AVX__)
  return __builtin_shufflevector(UIntV{}, v, s, s + 1, s + 2, s + 3, s + 4, s + 5, s + 6, s + 7);
#else
  return __builtin_shufflevector(UIntV{}, v, s, s + 1, s + 2, s + 3);
#endif
}

/// The last lane in all lanes.
inline UIntV spreadLast(UIntV v) {
#if defined(__AVX512F__)
  return __builtin_shufflevector(v, v, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15);
#elif defined(__AVX__)
  return __builtin_shufflevector(v, v, 7, 7, 7, 7, 7, 7, 7, 7);
#else
  return __builtin_shufflevector(v, v, 3, 3, 3, 3);
#endif
}

/// Each lane with all lanes below it.
template <class V>
inline V addLanesBelow(V v) {
  constexpr int lanes = lanesOf<FloatV>;
  v += V(moveUp<1>(UIntV(v)));
  v += V(moveUp<2>(UIntV(v)));
  if constexpr (lanes > 4) v += V(moveUp<4>(UIntV(v)));
  if constexpr (lanes > 8) v += V(moveUp<lanes / 2>(UIntV(v)));
  return v;
}

constexpr ptrdiff_t columnsAtOnce = 2 * lanesOf<FloatV>;

/// prefixes[i] = values[0] + ... + values[i - 1], modulo 2^32, for i up to n; reads and writes whole vectors.
inline void addPrefixes(unsigned* prefixes, const unsigned short* values, ptrdiff_t n) {
  prefixes[0] = 0;
  UIntV before = {};
  for (ptrdiff_t i = 0; i < n; i += lanesOf<FloatV>) {
    HalfShortV shorts;
    __builtin_memcpy(&shorts, values + i, sizeof shorts);
    const UIntV v = addLanesBelow(__builtin_convertvector(shorts, UIntV)) + before;
    before = spreadLast(v);
    __builtin_memcpy(prefixes + 1 + i, &v, sizeof v);
  }
}
/// The same modulo 2^16, in half the time: two values share a lane.
inline void addPrefixes(unsigned short* prefixes, const unsigned short* values, ptrdiff_t n) {
  prefixes[0] = 0;
  ShortSumV before = {};
  for (ptrdiff_t i = 0; i < n; i += columnsAtOnce) {
    UIntV pairs;
    __builtin_memcpy(&pairs, values + i, sizeof pairs);
    pairs += pairs << 16;  // the upper value becomes the sum of both
    const ShortSumV sums = ShortSumV((pairs >> 16) | (pairs & 0xffff0000u));
    const ShortSumV upTo = addLanesBelow(sums);
    const ShortSumV v = ShortSumV(pairs) + (upTo - sums) + before;
    before += ShortSumV(spreadLast(UIntV(upTo)));
    __builtin_memcpy(prefixes + 1 + i, &v, sizeof v);
  }
}

/// Calls use(offset, bytes, count) for the pieces of a row of the mask from column x on: what lies in the
/// image is not copied, what is mirrored goes through the buffer.
template <class Use>
inline void visitMask(const image::StripSource& mask, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n,
                      unsigned char* buffer, Use use) {
  const ptrdiff_t end = x + n, a = clamp(0, x, end), b = clamp(mask.size[0], x, end);
  use(a - x, image::sourceRow(mask, y, z) + a, b - a);
  loadLine<unsigned char>(buffer, mask, x, y, z, a - x);
  use(0, buffer, a - x);
  loadLine<unsigned char>(buffer, mask, b, y, z, end - b);
  use(b - x, buffer, end - b);
}

/// Numbers of samples whose mask is set, in the windows of one row after the other.
class MaskCounter {
public:
  MaskCounter(const image::StripSource& mask, ptrdiff_t width, unsigned char* scratch) : _mask(mask) {
    _knlSizeX = mask.marginBefore[0] + mask.marginAfter[0] + 1;
    _small = _knlSizeX * (mask.marginBefore[1] + mask.marginAfter[1] + 1) <= 65535;
    const ptrdiff_t length = lengthOf(mask, width);
    _prefixes = reinterpret_cast<unsigned*>(scratch);
    _counts = _prefixes + length;
    _columns = reinterpret_cast<unsigned short*>(_counts + length);
    _bytes = reinterpret_cast<unsigned char*>(_columns + length);
  }
  static ptrdiff_t scratchBytes(const image::StripSource& mask, ptrdiff_t width) {
    return lengthOf(mask, width) * ptrdiff_t(2 * sizeof(unsigned) + sizeof(unsigned short) + 1);
  }

  /// Before the first row of a tile or slice.
  void restart() { _started = false; }
  /// The numbers for n columns of row y. Rows follow one another downward.
  const unsigned* count(ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
    const ptrdiff_t span = n + _knlSizeX - 1;
    const ptrdiff_t above = y - _mask.marginBefore[1], below = y + _mask.marginAfter[1];
    if (!_started) {
      __builtin_memset(_columns, 0, size_t(roundUp(span, columnsAtOnce)) * sizeof(unsigned short));
      for (ptrdiff_t i = above; i < below; ++i) addRow<1>(x, i, z, span);
    } else {
      addRow<-1>(x, above - 1, z, span);
    }
    _started = true;
    addRow<1>(x, below, z, span);
    if (_small)
      countFromPrefixes(reinterpret_cast<unsigned short*>(_prefixes), n);
    else
      countFromPrefixes(_prefixes, n);
    return _counts;
  }

private:
  static ptrdiff_t lengthOf(const image::StripSource& mask, ptrdiff_t width) {
    return roundUp(width + mask.marginBefore[0] + mask.marginAfter[0], columnsAtOnce) + cacheLineFloats;
  }
  template <class T>
  void countFromPrefixes(T* prefixes, ptrdiff_t n) {
    addPrefixes(prefixes, _columns, n + _knlSizeX - 1);
    for (ptrdiff_t i = 0; i < n; ++i) _counts[i] = T(prefixes[i + _knlSizeX] - prefixes[i]);
  }
  template <int step>
  void addRow(ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t span) {
    unsigned short* columns = _columns;
    visitMask(_mask, x - _mask.marginBefore[0], y, z, span, _bytes,
              [columns](ptrdiff_t offset, const unsigned char* bytes, ptrdiff_t count) {
                unsigned short* column = columns + offset;
                for (ptrdiff_t i = 0; i < count; ++i)
                  column[i] = static_cast<unsigned short>(column[i] + (bytes[i] ? step : 0));
              });
  }

  const image::StripSource& _mask;
  ptrdiff_t _knlSizeX;
  bool _small;  ///< the number of samples in a window fits 16 bits
  bool _started = false;
  unsigned *_prefixes, *_counts;
  unsigned short* _columns;  ///< a column of a window has at most 65535 samples
  unsigned char* _bytes;
};

/// Samples where the mask is set, elsewhere 0, for convertStrip. Not multiplied: a NaN outside the mask must
/// not enter.
struct MaskedSamples {
  const processor::ProcessingInfo& info;
  unsigned char* mask;  ///< a line, for its margins
  void load(float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) const {
    info.loaders[0](line, info.sources[0], x, y, z, n);
    prefetch(x, y + groupRows, z, n);
    visitMask(info.sources[1], x, y, z, n, mask,
              [line](ptrdiff_t offset, const unsigned char* bytes, ptrdiff_t count) {
                float* samples = line + offset;
                for (ptrdiff_t i = 0; i < count; ++i) samples[i] = bytes[i] ? samples[i] : 0.0f;
              });
  }
  void store(const float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) const {
    info.storers[0](info.targets[0], line, x, y, z, n);
  }

private:
  /// A row of the mask, which the next group of rows reads.
  void prefetch(ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) const {
    const image::StripSource& s = info.sources[1];
    const unsigned char* row = image::sourceRow(s, smaller(y, s.end[1] + s.marginAfter[1] - 1), z);
    for (ptrdiff_t i = larger(x, 0); i < smaller(x + n, s.size[0]); i += cacheLine)
      __builtin_prefetch(row + i, 0, 2);
  }
};

/// The sums of windows in a part of a strip, row by row with the numbers of their samples, to
/// sink.take(sums, counts, x, y, z, n). Reads the sources at [begin, end) of the part, beyond it as of the
/// strip.
class MaskedSums {
public:
  MaskedSums(const processor::ProcessingInfo& info, const image::StripSource& part, unsigned char* scratch)
      : _part(part),
        _layout(part, false),
        _floats(reinterpret_cast<float*>(scratch)),
        _counter(info.sources[1], _layout.tileWidth, scratch + windowBytes(_layout)),
        _samples{info, scratch + windowBytes(_layout) + MaskCounter::scratchBytes(part, _layout.tileWidth)} {}
  static ptrdiff_t scratchBytes(const image::StripSource& part) {
    const WindowLayout l(part, false);
    return roundUp(windowBytes(l) + MaskCounter::scratchBytes(part, l.tileWidth) + l.inputPitch, cacheLine);
  }

  /// The plane z.
  template <class Sink>
  void run(Sink& sink, ptrdiff_t z) {
    struct Lines {
      const MaskedSamples& samples;
      MaskCounter& counter;
      Sink& sink;
      void load(float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) const {
        samples.load(line, x, y, z, n);
      }
      void store(const float* sums, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
        sink.take(sums, counter.count(x, y, z, n), x, y, z, n);
      }
    } lines{_samples, _counter, sink};
    for (ptrdiff_t x = _part.begin[0]; x < _part.end[0]; x += _layout.tileWidth) {
      _counter.restart();
      runWindowTile(WindowTile<Lines>(lines, _part, _layout, 1.0f, x, z, _floats));
    }
  }
  /// Instead of sums, when a window is one sample.
  void convert() { convertStrip(_samples, _part, _floats, _layout.tileWidth); }

private:
  static ptrdiff_t windowBytes(const WindowLayout& l) {
    return roundUp(l.scratchFloats() * ptrdiff_t(sizeof(float)), cacheLine);
  }

  const image::StripSource& _part;
  WindowLayout _layout;
  float* _floats;
  MaskCounter _counter;
  MaskedSamples _samples;
};

/// The mean; 0 of no sample. Divides in every case: from a conditional division the compiler makes a
/// conditional load, which takes much longer.
inline void divideByCounts(float* means, const float* sums, const unsigned* counts, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const float mean = sums[i] / float(counts[i]);
    means[i] = counts[i] ? mean : 0.0f;
  }
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
