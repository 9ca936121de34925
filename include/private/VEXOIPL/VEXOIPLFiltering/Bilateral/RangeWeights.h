#pragma once

// Range weights of the bilateral filters: how much a sample counts that differs so much from the centre.

#include <stddef.h>

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralParameters.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/Vector.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

using imaproc::filter::BilateralParameters;

/// Differences are weighed in groups of up to so many: lines are read and written up to the end of one.
constexpr ptrdiff_t weighedAtOnce = 2 * lanesOf<FloatV>;

/// The bins of differences. One that is NaN has the last bin: no value leaves the table.
struct Bins {
  FloatV scale, last;

  explicit Bins(const BilateralParameters& p)
      : scale(splat<FloatV>(p.scale)), last(splat<FloatV>(float(p.lastBin))) {}
  IntV of(FloatV a, FloatV b) const {
    const FloatV magnitude = FloatV(IntV(a - b) & splatInt(0x7fffffff));
    return __builtin_convertvector(lower(last, magnitude * scale), IntV);
  }
};

/// A table in memory. Its look-ups are a loop of their own over many bins, stored before as whole vectors.
/// One by one, from pairs of bins: the compiler would gather them, which takes half as long again.
class MemoryTable {
public:
  explicit MemoryTable(const BilateralParameters& p) : _bins(p), _table(p.range) {}

  /// The weights of the differences of a and b: of n, and of those that fill up the last group.
  void weigh(float* weights, const float* a, const float* b, ptrdiff_t n) const {
    const MemoryTable table = *this;  // in registers, whatever is stored
    constexpr ptrdiff_t atOnce = 512;
    int bins[atOnce];
    for (; n > 0; n -= atOnce, weights += atOnce, a += atOnce, b += atOnce) {
      const ptrdiff_t count = smaller(n, atOnce);
      for (ptrdiff_t i = 0; i < count; i += lanesOf<FloatV>) {
        const IntV found = table._bins.of(loadVector<FloatV>(a + i), loadVector<FloatV>(b + i));
        __builtin_memcpy(bins + i, &found, sizeof found);
      }
#pragma GCC unroll 2
      for (ptrdiff_t i = 0; i < count; i += 4) {
        unsigned long long pairs[2];
        __builtin_memcpy(pairs, bins + i, sizeof pairs);
        storeVector(weights + i, Float4{table._table[pairs[0] & 0xffffffff], table._table[pairs[0] >> 32],
                                        table._table[pairs[1] & 0xffffffff], table._table[pairs[1] >> 32]});
      }
    }
  }

private:
  Bins _bins;
  const float* _table;
};

#if defined(__AVX512F__)
constexpr int registerBins = 256;

/// A table of up to 256 bins in sixteen registers: the high and the low halves of its floats, because one
/// instruction looks up 32 halves among 64. Look-ups in memory take twice as long.
class RegisterTable {
public:
  explicit RegisterTable(const BilateralParameters& p) : _bins(p) {
    for (int i = 0; i < 8; ++i) {
      unsigned short highs[32], lows[32];
      for (int k = 0; k < 32; ++k) {
        const int bin = 32 * i + k;
        unsigned weight;
        __builtin_memcpy(&weight, p.range + (bin < p.lastBin ? bin : p.lastBin), sizeof weight);
        highs[k] = (unsigned short)(weight >> 16);
        lows[k] = (unsigned short)weight;
      }
      _high[i] = _mm512_loadu_si512(highs);
      _low[i] = _mm512_loadu_si512(lows);
    }
  }

  /// As that of MemoryTable.
  void weigh(float* weights, const float* a, const float* b, ptrdiff_t n) const {
    const RegisterTable table = *this;
    constexpr ptrdiff_t lanes = lanesOf<FloatV>;
    for (ptrdiff_t i = 0; i < n; i += weighedAtOnce) {
      FloatV weights0, weights1;
      table.get(table._bins.of(loadVector<FloatV>(a + i), loadVector<FloatV>(b + i)),
                table._bins.of(loadVector<FloatV>(a + i + lanes), loadVector<FloatV>(b + i + lanes)),
                weights0, weights1);
      storeVector(weights + i, weights0);
      storeVector(weights + i + lanes, weights1);
    }
  }

private:
  static __m512i halves(const __m512i (&table)[8], __m512i bins, __mmask32 bit6, __mmask32 bit7) {
    __m512i found[4];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) found[i] = _mm512_permutex2var_epi16(table[2 * i], bins, table[2 * i + 1]);
    return _mm512_mask_blend_epi16(bit7, _mm512_mask_blend_epi16(bit6, found[0], found[1]),
                                   _mm512_mask_blend_epi16(bit6, found[2], found[3]));
  }
  /// Packing and unpacking both work within groups of four lanes: so the weights are in the order of the
  /// bins.
  void get(IntV bins0, IntV bins1, FloatV& weights0, FloatV& weights1) const {
    const __m512i bins = _mm512_packus_epi32(__m512i(bins0), __m512i(bins1));
    const __mmask32 bit6 = _mm512_test_epi16_mask(bins, _mm512_set1_epi16(64));
    const __mmask32 bit7 = _mm512_test_epi16_mask(bins, _mm512_set1_epi16(128));
    const __m512i highs = halves(_high, bins, bit6, bit7), lows = halves(_low, bins, bit6, bit7);
    weights0 = FloatV(_mm512_unpacklo_epi16(lows, highs));
    weights1 = FloatV(_mm512_unpackhi_epi16(lows, highs));
  }

  Bins _bins;
  __m512i _high[8], _low[8];
};
#endif

/// Calls use(table) with the fastest table for p.
template <class Use>
inline void withRangeTable(const BilateralParameters& p, Use use) {
#if defined(__AVX512F__)
  if (p.lastBin < registerBins) return use(RegisterTable(p));
#endif
  use(MemoryTable(p));
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
