#pragma once

// Vectors of floats for kernel sources, in the vector extension of GCC and Clang: +, -, * and comparisons
// work lane by lane, and the same source serves every instruction set. Only types that the set holds in one
// register are defined.

#include <stddef.h>
#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace vexo::VEXO_KERNEL_SET {
namespace {

using Float4 = float __attribute__((vector_size(16)));
#if defined(__AVX__)
using Float8 = float __attribute__((vector_size(32)));
#endif
#if defined(__AVX512F__)
using Float16 = float __attribute__((vector_size(64)));
#endif

/// The widest vector of the set.
#if defined(__AVX512F__)
using FloatV = Float16;
#elif defined(__AVX__)
using FloatV = Float8;
#else
using FloatV = Float4;
#endif

using IntV = int __attribute__((vector_size(sizeof(FloatV))));
using ShortV = unsigned short __attribute__((vector_size(sizeof(FloatV))));
using ByteV = unsigned char __attribute__((vector_size(sizeof(FloatV))));

template <class V>
constexpr int lanesOf = sizeof(V) / sizeof(float);

/// Reads and writes at any address.
template <class V>
inline V loadVector(const float* p) {
  V v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}
template <class V>
inline void storeVector(float* p, V v) {
  __builtin_memcpy(p, &v, sizeof v);
}
/// Writes past the caches, at multiples of the size of a vector. The frame waits for such writes to end.
inline void streamVector(float* p, FloatV v) {
#if defined(__AVX512F__)
  _mm512_stream_ps(p, v);
#elif defined(__AVX__)
  _mm256_stream_ps(p, v);
#elif defined(__SSE2__)
  _mm_stream_ps(p, v);
#else
  storeVector(p, v);
#endif
}
template <class V>
inline V splat(float value) {
  return value - V{};  // not +, which would lose the sign of -0
}

/// b < a ? b : a and b < a ? a : b: of the same two values always both, NaN or not. One instruction each; the
/// compiler makes a comparison and a selection of the expressions.
inline FloatV lower(FloatV a, FloatV b) {
#if defined(__AVX512F__)
  return _mm512_maskz_min_ps(0xffff, b, a);
#elif defined(__AVX__)
  return _mm256_min_ps(b, a);
#elif defined(__SSE2__)
  return _mm_min_ps(b, a);
#else
  return b < a ? b : a;
#endif
}
inline FloatV higher(FloatV a, FloatV b) {
#if defined(__AVX512F__)
  return _mm512_maskz_max_ps(0xffff, a, b);
#elif defined(__AVX__)
  return _mm256_max_ps(a, b);
#elif defined(__SSE2__)
  return _mm_max_ps(a, b);
#else
  return b < a ? a : b;
#endif
}

inline IntV splatInt(int value) {
  return value - IntV{};
}

#if !defined(__AVX512F__)  // which has instructions that narrow
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "low halves are expected first");
/// The low halves of the elements of a, then those of b.
#if defined(__AVX__)
inline ByteV evenBytes(ByteV a, ByteV b) {
  return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30, 32, 34, 36,
                                 38, 40, 42, 44, 46, 48, 50, 52, 54, 56, 58, 60, 62);
}
inline ShortV evenShorts(ShortV a, ShortV b) {
  return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}
#else
inline ByteV evenBytes(ByteV a, ByteV b) {
  return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}
inline ShortV evenShorts(ShortV a, ShortV b) {
  return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14);
}
#endif
#endif

// Steps of the transposes below. Within each group of four lanes: interleave the low or the high halves of a
// and b, by single lanes or by pairs of lanes.
inline Float4 interleaveLow(Float4 a, Float4 b) {
  return __builtin_shufflevector(a, b, 0, 4, 1, 5);
}
inline Float4 interleaveHigh(Float4 a, Float4 b) {
  return __builtin_shufflevector(a, b, 2, 6, 3, 7);
}
inline Float4 joinLow(Float4 a, Float4 b) {
  return __builtin_shufflevector(a, b, 0, 1, 4, 5);
}
inline Float4 joinHigh(Float4 a, Float4 b) {
  return __builtin_shufflevector(a, b, 2, 3, 6, 7);
}

#if defined(__AVX__)
inline Float8 interleaveLow(Float8 a, Float8 b) {
  return __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
}
inline Float8 interleaveHigh(Float8 a, Float8 b) {
  return __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
}
inline Float8 joinLow(Float8 a, Float8 b) {
  return __builtin_shufflevector(a, b, 0, 1, 8, 9, 4, 5, 12, 13);
}
inline Float8 joinHigh(Float8 a, Float8 b) {
  return __builtin_shufflevector(a, b, 2, 3, 10, 11, 6, 7, 14, 15);
}
#endif

#if defined(__AVX512F__)
inline Float16 interleaveLow(Float16 a, Float16 b) {
  return __builtin_shufflevector(a, b, 0, 16, 1, 17, 4, 20, 5, 21, 8, 24, 9, 25, 12, 28, 13, 29);
}
inline Float16 interleaveHigh(Float16 a, Float16 b) {
  return __builtin_shufflevector(a, b, 2, 18, 3, 19, 6, 22, 7, 23, 10, 26, 11, 27, 14, 30, 15, 31);
}
inline Float16 joinLow(Float16 a, Float16 b) {
  return __builtin_shufflevector(a, b, 0, 1, 16, 17, 4, 5, 20, 21, 8, 9, 24, 25, 12, 13, 28, 29);
}
inline Float16 joinHigh(Float16 a, Float16 b) {
  return __builtin_shufflevector(a, b, 2, 3, 18, 19, 6, 7, 22, 23, 10, 11, 26, 27, 14, 15, 30, 31);
}
/// The even, respectively odd, groups of four lanes of a, then those of b.
inline Float16 evenGroups(Float16 a, Float16 b) {
  return __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11, 16, 17, 18, 19, 24, 25, 26, 27);
}
inline Float16 oddGroups(Float16 a, Float16 b) {
  return __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15, 20, 21, 22, 23, 28, 29, 30, 31);
}
#endif

/// Transposes the 4x4 squares that each four vectors hold, one square per group of four lanes.
template <class V>
inline void transposeSquares(V* rows) {
#pragma GCC unroll 4
  for (int i = 0; i < lanesOf<V>; i += 4) {
    V* r = rows + i;
    const V a = interleaveLow(r[0], r[1]), b = interleaveHigh(r[0], r[1]);
    const V c = interleaveLow(r[2], r[3]), d = interleaveHigh(r[2], r[3]);
    r[0] = joinLow(a, c);
    r[1] = joinHigh(a, c);
    r[2] = joinLow(b, d);
    r[3] = joinHigh(b, d);
  }
}

/// Transposes the square of lanesOf<V> vectors, in registers when the array is a local of the caller.
inline void transpose(Float4* rows) {
  transposeSquares(rows);
}

#if defined(__AVX__)
inline void transpose(Float8* rows) {
  transposeSquares(rows);
#pragma GCC unroll 4
  for (int j = 0; j < 4; ++j) {
    const Float8 a = rows[j], b = rows[4 + j];
    rows[j] = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
    rows[4 + j] = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
  }
}
#endif

#if defined(__AVX512F__)
inline void transpose(Float16* rows) {
  transposeSquares(rows);
#pragma GCC unroll 4
  for (int j = 0; j < 4; ++j) {
    const Float16 a = evenGroups(rows[j], rows[4 + j]), b = oddGroups(rows[j], rows[4 + j]);
    const Float16 c = evenGroups(rows[8 + j], rows[12 + j]), d = oddGroups(rows[8 + j], rows[12 + j]);
    rows[j] = evenGroups(a, c);
    rows[4 + j] = evenGroups(b, d);
    rows[8 + j] = oddGroups(a, c);
    rows[12 + j] = oddGroups(b, d);
  }
}
#endif

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
