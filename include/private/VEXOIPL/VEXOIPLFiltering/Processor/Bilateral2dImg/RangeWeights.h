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
  const FloatV bins = magnitude * scale;
  return __builtin_convertvector(bins < lastBin ? bins : lastBin, IntV);
}

#if defined(__AVX512F__)
constexpr int registerBins = 256;

/// A table of up to 256 bins in sixteen registers. Look-ups in memory, one by one or gathered, take two to
/// three times as long.
struct RegisterTable {
  FloatV parts[16];

  explicit RegisterTable(const BilateralParameters& p) {
    float bins[registerBins];
    for (int i = 0; i < registerBins; ++i) bins[i] = p.range[i < p.lastBin ? i : p.lastBin];
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) parts[i] = loadVector<FloatV>(bins + 16 * i);
  }
  static FloatV pair(FloatV low, IntV bins, FloatV high) {
    return _mm512_permutex2var_ps(low, __m512i(bins), high);
  }
  FloatV get(IntV bins) const {
    const __mmask16 bit5 = _mm512_test_epi32_mask(__m512i(bins), _mm512_set1_epi32(32));
    const __mmask16 bit6 = _mm512_test_epi32_mask(__m512i(bins), _mm512_set1_epi32(64));
    const __mmask16 bit7 = _mm512_test_epi32_mask(__m512i(bins), _mm512_set1_epi32(128));
    FloatV quarters[4];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i)
      quarters[i] = _mm512_mask_blend_ps(bit5, pair(parts[4 * i], bins, parts[4 * i + 1]),
                                         pair(parts[4 * i + 2], bins, parts[4 * i + 3]));
    return _mm512_mask_blend_ps(bit7, _mm512_mask_blend_ps(bit6, quarters[0], quarters[1]),
                                _mm512_mask_blend_ps(bit6, quarters[2], quarters[3]));
  }
};
#endif

/// A table in memory. Its look-ups are a loop of their own over many bins, stored before and read after as
/// whole vectors.
inline void lookUp(float* weights, const int* bins, const float* table, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) weights[i] = table[bins[i]];
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
