#pragma once

// From floats to samples of integer types, a vector at a time. A conversion gives integers whose low bits are
// the samples; narrowing them to the sample type is a step of its own. Values that do not fit, NaN and
// infinities included, are replaced before a float becomes an integer, because the language does not define
// what they become.

#include <stddef.h>
#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "VEXOProcessing/Kernel/Vector.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

/// How a float result becomes a sample of an integer type: rounded half away from zero, then
enum class eConversion {
  Saturate,  ///< limited to the type
  Wrap       ///< its low bits kept
};

template <class T>
constexpr bool isSigned = T(-1) < T(0);
template <class T>
constexpr float aboveHighest = float(1ull << (8 * sizeof(T) - isSigned<T>));
template <class T>
constexpr float lowest = isSigned<T> ? -aboveHighest<T> : 0.0f;

/// The value where the mask (all bits or none, per lane) is set, else 0.
inline FloatV keepWhere(IntV mask, FloatV value) {
  return FloatV(IntV(value) & mask);
}

/// The half that is added to the magnitude before a truncation. It is the float below 0.5: so 0.49999997
/// gives 0, and odd values from 2^23 on, which a sum with 0.5 would round to even, survive.
inline FloatV addHalfAwayFromZero(FloatV v) {
  const IntV sign = IntV(v) & IntV(splat<FloatV>(-0.0f));
  return v + FloatV(sign | IntV(splat<FloatV>(0x1.fffffep-2f)));
}

/// The truncated value, or -2^31 where that does not fit. It is what the instruction of x86 is defined to
/// answer; to replace such values first, for the conversion of the language, was measured 30 % slower on
/// whole lines.
inline IntV truncateOrLowest(FloatV v) {
#if defined(__AVX512F__)
  return IntV(_mm512_maskz_cvttps_epi32(0xffff, v));
#elif defined(__AVX__)
  return IntV(_mm256_cvttps_epi32(v));
#elif defined(__SSE2__)
  return IntV(_mm_cvttps_epi32(v));
#else
  const IntV fits = (v > splat<FloatV>(-0x1p31f)) & (v < splat<FloatV>(0x1p31f));
  return __builtin_convertvector(keepWhere(fits, v), IntV) | (~fits & splatInt(-0x7fffffff - 1));
#endif
}

inline IntV truncate(FloatV v) {
  return __builtin_convertvector(v, IntV);
}

/// The low 32 bits of the truncated value, whose magnitude is below 2^63. All steps are exact.
inline IntV truncateLowBits(FloatV v) {
  const FloatV multiples = __builtin_convertvector(truncate(v * splat<FloatV>(0x1p-32f)), FloatV);
  FloatV rest = v - multiples * splat<FloatV>(0x1p32f);
  rest -= keepWhere(rest >= splat<FloatV>(0x1p31f), splat<FloatV>(0x1p32f));
  rest += keepWhere(rest < splat<FloatV>(-0x1p31f), splat<FloatV>(0x1p32f));
  return truncate(rest);
}

/// Integers that saturate at 32 bits, or 64 bits for samples of 32 bits; only the low bits are kept. The low
/// bits of the highest integer are ones, those of the lowest zeros.
template <class T>
inline IntV wrap(FloatV v) {
  constexpr float limit = sizeof(T) < 4 ? 0x1p31f : 0x1p63f;
  const FloatV rounded = addHalfAwayFromZero(v);
  const IntV tooHigh = rounded >= splat<FloatV>(limit);
  if constexpr (sizeof(T) < 4) return truncateOrLowest(rounded) | tooHigh;
  const IntV fits = (rounded > splat<FloatV>(-limit)) & ~tooHigh;
  return truncateLowBits(keepWhere(fits, rounded)) | tooHigh;
}

/// Integers limited to the range of T.
template <class T>
inline IntV saturate(FloatV v) {
  const FloatV rounded = addHalfAwayFromZero(v);
  const IntV above = rounded >= splat<FloatV>(aboveHighest<T>);
  const FloatV safe = keepWhere((rounded > splat<FloatV>(lowest<T>)) & ~above, rounded);
  const IntV inside = sizeof(T) == 4 && !isSigned<T> ? truncateLowBits(safe) : truncate(safe);
  const IntV below = rounded <= splat<FloatV>(lowest<T>);
  constexpr int low = isSigned<T> ? -1 - int(((1u << (8 * sizeof(T) - 1)) - 1)) : 0;
  return inside | (above & splatInt(~low)) | (below & splatInt(low));
}

template <class T, eConversion conversion>
inline IntV convert(FloatV v) {
  return conversion == eConversion::Wrap ? wrap<T>(v) : saturate<T>(v);
}

#if defined(__AVX512F__)
template <size_t size>
struct Narrow {
  using Type = IntV;
};
template <>
struct Narrow<1> {
  using Type = unsigned char __attribute__((vector_size(16)));
};
template <>
struct Narrow<2> {
  using Type = unsigned short __attribute__((vector_size(32)));
};
#endif

/// Samples that are the low bits of the integers, written from p on.
template <class T>
inline void storeLowBits(unsigned char* p, const IntV (&v)[4]) {
#if defined(__AVX512F__)
  using Samples = typename Narrow<sizeof(T)>::Type;
  for (int i = 0; i < 4; ++i) {
    const Samples samples = __builtin_convertvector(v[i], Samples);
    __builtin_memcpy(p + i * sizeof samples, &samples, sizeof samples);
  }
#else
  if constexpr (sizeof(T) == 1) {
    const ByteV samples = evenBytes(evenBytes(ByteV(v[0]), ByteV(v[1])), evenBytes(ByteV(v[2]), ByteV(v[3])));
    __builtin_memcpy(p, &samples, sizeof samples);
  } else if constexpr (sizeof(T) == 2) {
    const ShortV low = evenShorts(ShortV(v[0]), ShortV(v[1])), high = evenShorts(ShortV(v[2]), ShortV(v[3]));
    __builtin_memcpy(p, &low, sizeof low);
    __builtin_memcpy(p + sizeof low, &high, sizeof high);
  } else {
    __builtin_memcpy(p, v, sizeof v);
  }
#endif
}

constexpr int convertedAtOnce = 4 * lanesOf<FloatV>;

/// Converts convertedAtOnce floats to samples.
template <class T, eConversion conversion>
inline void convertBlock(unsigned char* samples, const float* line) {
  IntV integers[4];
#pragma GCC unroll 4
  for (int i = 0; i < 4; ++i)
    integers[i] = convert<T, conversion>(loadVector<FloatV>(line + i * lanesOf<FloatV>));
  storeLowBits<T>(samples, integers);
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
