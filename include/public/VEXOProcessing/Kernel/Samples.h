#pragma once

// Samples of one type to samples of another, for kernels that work in the samples' own types. Integers
// saturate; floats become integers by the rule that saturates.

#include <stddef.h>
#include <stdint.h>

#include "VEXOProcessing/Kernel/Convert.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/Lines.h"

namespace vexo::VEXO_KERNEL_SET {
namespace {

template <class A, class B>
constexpr bool isSame = false;
template <class A>
constexpr bool isSame<A, A> = true;

/// An integer type that holds all values of both types.
template <class A, class B, bool narrow = (sizeof(A) < 4 && sizeof(B) < 4)>
struct CommonInteger {
  using Type = long long;
};
template <class A, class B>
struct CommonInteger<A, B, true> {
  using Type = int;
};

/// Lowest and highest sample of an integer type.
template <class T>
constexpr long long lowestInteger = isSigned<T> ? -(1ll << (8 * sizeof(T) - 1)) : 0;
template <class T>
constexpr long long highestInteger = (1ll << (8 * sizeof(T) - isSigned<T>)) - 1;

constexpr ptrdiff_t pieceLength = 1024;  ///< samples; a multiple of convertedAtOnce
static_assert(pieceLength % convertedAtOnce == 0);

/// Converts up to pieceLength samples. Answers where they are: in the piece, or where they were when there is
/// nothing to convert. The piece may be written beyond n.
template <class TIn, class TOut>
const unsigned char* convertPiece(unsigned char* piece, const unsigned char* samples, ptrdiff_t n) {
  if constexpr (isSame<TIn, TOut>) {
    return samples;
  } else if constexpr (isSame<TOut, float>) {
    for (ptrdiff_t i = 0; i < n; ++i) {
      TIn value;
      __builtin_memcpy(&value, samples + i * ptrdiff_t(sizeof value), sizeof value);
      const float converted = float(value);
      __builtin_memcpy(piece + i * ptrdiff_t(sizeof converted), &converted, sizeof converted);
    }
  } else if constexpr (isSame<TIn, float>) {
    float line[convertedAtOnce] = {};
    for (ptrdiff_t i = 0; i < n; i += convertedAtOnce) {
      const ptrdiff_t count = smaller(convertedAtOnce, n - i);
      __builtin_memcpy(line, samples + i * ptrdiff_t(sizeof(float)), size_t(count) * sizeof(float));
      convertBlock<TOut, eConversion::Saturate>(piece + i * ptrdiff_t(sizeof(TOut)), line);
    }
  } else {
    using Wide = typename CommonInteger<TIn, TOut>::Type;
    constexpr Wide low = Wide(lowestInteger<TOut>), high = Wide(highestInteger<TOut>);
    for (ptrdiff_t i = 0; i < n; ++i) {
      TIn value;
      __builtin_memcpy(&value, samples + i * ptrdiff_t(sizeof value), sizeof value);
      const Wide wide = Wide(value);
      const TOut converted = TOut(wide < low ? low : wide > high ? high : wide);
      __builtin_memcpy(piece + i * ptrdiff_t(sizeof converted), &converted, sizeof converted);
    }
  }
  return piece;
}

/// Copies to a row of the target, past the caches where it is streamed. Out of line: in each of 49 storers it
/// would be a third of the code.
[[gnu::noinline]] inline void copyToRow(unsigned char* row, const unsigned char* bytes, ptrdiff_t n,
                                        bool streamed) {
  constexpr ptrdiff_t size = sizeof(FloatV);
  ptrdiff_t i = 0;
  if (streamed) {
    i = smaller(
        n, ptrdiff_t((sizeof(FloatV) - reinterpret_cast<size_t>(row) % sizeof(FloatV)) % sizeof(FloatV)));
    __builtin_memcpy(row, bytes, size_t(i));
    for (; i + size <= n; i += size) {
      FloatV v;
      __builtin_memcpy(&v, bytes + i, sizeof v);
      streamVector(reinterpret_cast<float*>(row + i), v);
    }
  }
  __builtin_memcpy(row + i, bytes + i, size_t(n - i));
}

/// Stores n samples, aligned for their type, to the row (y, z) from column x on.
using StoreSamples = void (*)(const image::StripTarget& target, const unsigned char* samples, ptrdiff_t x,
                              ptrdiff_t y, ptrdiff_t z, ptrdiff_t n);
template <class TIn, class TOut>
void storeSamples(const image::StripTarget& t, const unsigned char* samples, ptrdiff_t x, ptrdiff_t y,
                  ptrdiff_t z, ptrdiff_t n) {
  if constexpr (isSame<TIn, float> && isSame<TOut, float>) {
    storeFloatLine(t, reinterpret_cast<const float*>(samples), x, y, z, n);
  } else {
    unsigned char* row = image::targetRow(t, y, z) + (x - t.begin[0]) * ptrdiff_t(sizeof(TOut));
    constexpr ptrdiff_t length = isSame<TIn, TOut> ? PTRDIFF_MAX : pieceLength;
    unsigned char piece[isSame<TIn, TOut> ? 1 : pieceLength * sizeof(TOut)];
    for (ptrdiff_t i = 0; i < n; i += smaller(length, n - i)) {
      const ptrdiff_t count = smaller(length, n - i);
      copyToRow(row + i * ptrdiff_t(sizeof(TOut)),
                convertPiece<TIn, TOut>(piece, samples + i * ptrdiff_t(sizeof(TIn)), count),
                count * ptrdiff_t(sizeof(TOut)), t.streamed);
    }
  }
}

/// The functions of a kernel for one input type.
template <template <class, class> class Function, class TIn>
constexpr void addInputType(processor::KernelTable& table, int in) {
  table.functions[in][0] = Function<TIn, unsigned char>::run;
  table.functions[in][1] = Function<TIn, signed char>::run;
  table.functions[in][2] = Function<TIn, unsigned short>::run;
  table.functions[in][3] = Function<TIn, short>::run;
  table.functions[in][4] = Function<TIn, unsigned>::run;
  table.functions[in][5] = Function<TIn, int>::run;
  table.functions[in][6] = Function<TIn, float>::run;
}

/// The table of a kernel with a function per pair of types, Function<TIn, TOut>::run. On AVX, which has no
/// integer vectors, only float to float.
template <template <class, class> class Function>
constexpr processor::KernelTable makeSampleTable(size_t (*scratchSize)(const processor::ProcessingInfo&)) {
  processor::KernelTable table = {};
  table.scratchSize = scratchSize;
#if defined(VEXO_KERNEL_SET_avx)
  table.functions[6][6] = Function<float, float>::run;
#else
  addInputType<Function, unsigned char>(table, 0);
  addInputType<Function, signed char>(table, 1);
  addInputType<Function, unsigned short>(table, 2);
  addInputType<Function, short>(table, 3);
  addInputType<Function, unsigned>(table, 4);
  addInputType<Function, int>(table, 5);
  addInputType<Function, float>(table, 6);
#endif
  return table;
}

}  // namespace
}  // namespace vexo::VEXO_KERNEL_SET
