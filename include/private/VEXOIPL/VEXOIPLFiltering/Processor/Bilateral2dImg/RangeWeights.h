#pragma once

// Range weights of the bilateral filters: how much a sample counts that differs so much from the centre.

#include <stddef.h>

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/BilateralParameters.h"
#include "VEXOProcessing/Kernel/Vector.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

using imaproc::filter::BilateralParameters;

/// The bins of differences to the centres. A difference that is NaN has the last bin: no value leaves the
/// table.
inline IntV binsOf(FloatV samples, FloatV centres, FloatV scale, FloatV lastBin) {
  const FloatV magnitude = FloatV(IntV(samples - centres) & splatInt(0x7fffffff));
  return __builtin_convertvector(lower(lastBin, magnitude * scale), IntV);
}

#if defined(__AVX512F__)
constexpr int registerBins = 256;

/// A table of up to 256 bins in sixteen registers: the high and the low halves of its floats, because one
/// instruction looks up 32 halves among 64. Look-ups in memory take twice as long.
struct RegisterTable {
  static constexpr ptrdiff_t atOnce = 2 * lanesOf<FloatV>;
  __m512i high[8], low[8];

  explicit RegisterTable(const BilateralParameters& p) {
    for (int i = 0; i < 8; ++i) {
      unsigned short highs[32], lows[32];
      for (int k = 0; k < 32; ++k) {
        const int bin = 32 * i + k;
        unsigned weight;
        __builtin_memcpy(&weight, p.range + (bin < p.lastBin ? bin : p.lastBin), sizeof weight);
        highs[k] = (unsigned short)(weight >> 16);
        lows[k] = (unsigned short)weight;
      }
      high[i] = _mm512_loadu_si512(highs);
      low[i] = _mm512_loadu_si512(lows);
    }
  }
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
    const __m512i highs = halves(high, bins, bit6, bit7), lows = halves(low, bins, bit6, bit7);
    weights0 = FloatV(_mm512_unpacklo_epi16(lows, highs));
    weights1 = FloatV(_mm512_unpackhi_epi16(lows, highs));
  }
};
#endif

/// A table in memory. Its look-ups are a loop of their own over many bins (an even number), stored before and
/// read after as whole vectors. One by one, from pairs of bins: the compiler would gather them, which takes
/// twice as long.
inline void lookUp(float* weights, const int* bins, const float* table, ptrdiff_t n) {
#pragma GCC unroll 8
  for (ptrdiff_t i = 0; i < n; i += 2) {
    unsigned long long pair;
    __builtin_memcpy(&pair, bins + i, sizeof pair);
    weights[i] = table[pair & 0xffffffff];
    weights[i + 1] = table[pair >> 32];
  }
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
