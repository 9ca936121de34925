// Statistics of one strip.
//
// The samples are taken as one sequence, row by row, in blocks that fit the first cache. A block of integers
// is added up exactly in sums that it cannot overflow. A block of floats is gone through twice, for its mean
// and for the deviations from it, in a fixed number of lanes of doubles: so every instruction set adds in the
// same order.

#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrSums.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/Vector.h"

namespace vexo::imaproc::glbmsr {
class StatsMsr2dLvl3;
}

namespace vexo::VEXO_KERNEL_SET {
namespace {

using imaproc::glbmsr::add;
using imaproc::glbmsr::IntegerSums;
using imaproc::glbmsr::RealSums;
using imaproc::glbmsr::StatsMsrParameters;
using imaproc::glbmsr::StatsMsrSums;
using processor::ProcessingInfo;

constexpr ptrdiff_t blockBytes = 8192;

template <class T>
inline T readSample(const unsigned char* samples, int i) {
  T value;
  __builtin_memcpy(&value, samples + i * ptrdiff_t(sizeof value), sizeof value);
  return value;
}

/// The squares of small numbers, those of each two neighbours added. Compilers spread them over wider vectors
/// instead, at twice the time.
inline IntV squaresOfPairs(ShortV v) {
#if defined(__AVX512BW__)
  return IntV(_mm512_madd_epi16(__m512i(v), __m512i(v)));
#elif defined(__AVX2__)
  return IntV(_mm256_madd_epi16(__m256i(v), __m256i(v)));
#elif defined(__SSE2__) && !defined(__AVX__)
  return IntV(_mm_madd_epi16(__m128i(v), __m128i(v)));
#else
  const IntV low = IntV(v) & 0xffff, high = IntV(v) >> 16;
  return low * low + high * high;
#endif
}

/// Adds up n bytes, each xor bias, and their squares: as words, whose halves fit 16 bits for a while.
inline void sumBytes(const unsigned char* samples, int n, unsigned char bias, int& sum, int& squares) {
  constexpr int step = sizeof(ShortV), most = 65535 / (2 * 255);
  const ShortV biases = ShortV{} + static_cast<unsigned short>(bias * 257);
  IntV squareParts = {};
  int i = 0;
  while (i + step <= n) {
    ShortV parts = {};
    for (int k = 0; k < most && i + step <= n; ++k, i += step) {
      const ShortV v = readSample<ShortV>(samples + i, 0) ^ biases;
      const ShortV even = v & 255, odd = v >> 8;
      parts += even + odd;
      squareParts += squaresOfPairs(even) + squaresOfPairs(odd);
    }
    for (unsigned lane = 0; lane < sizeof(ShortV) / sizeof(short); ++lane) sum += parts[lane];
  }
  for (int lane = 0; lane < lanesOf<FloatV>; ++lane) squares += squareParts[lane];
  for (; i < n; ++i) {
    const int v = samples[i] ^ bias;
    sum += v;
    squares += v * v;
  }
}

/// Not inlined: the compiler then keeps the loop that it vectorises in registers.
template <class T>
[[gnu::noinline]] void addBlock(IntegerSums& sums, const unsigned char* samples, int n) {
  using U = typename IntegersOf<sizeof(T)>::Unsigned;
  constexpr U top = U(U(1) << (8 * sizeof(U) - 1)), bias = T(-1) < T(0) ? top : U(0);
  U low = U(~U(0)), high = 0;
  IntegerSums block = {bias ? -static_cast<long long>(top) : 0, 0, 0,
                       static_cast<unsigned long long>(n),      0, 0};
  if constexpr (sizeof(T) == 1) {
    static_assert(blockBytes * 255ll * 255ll < 1ll << 31);
    int sum = 0, squares = 0;
    sumBytes(samples, n, bias, sum, squares);
    for (int i = 0; i < n; ++i) {
      const U v = U(readSample<U>(samples, i) ^ bias);
      low = v < low ? v : low;
      high = v > high ? v : high;
    }
    block.sum = static_cast<unsigned>(sum);
    block.squares = static_cast<unsigned>(squares);
  } else if constexpr (sizeof(T) == 2) {
    unsigned sum = 0;
    unsigned long long squares = 0;
    for (int i = 0; i < n; ++i) {
      const U v = U(readSample<U>(samples, i) ^ bias);
      low = v < low ? v : low;
      high = v > high ? v : high;
      sum += v;
      squares += unsigned(v) * v;
    }
    block.sum = sum;
    block.squares = squares;
  } else {
    // Halves of the squares, each far from overflow.
    unsigned long long sum = 0, lowSquares = 0, highSquares = 0;
    for (int i = 0; i < n; ++i) {
      const U v = readSample<U>(samples, i) ^ bias;
      low = v < low ? v : low;
      high = v > high ? v : high;
      const unsigned long long wide = v, square = wide * wide;
      sum += wide;
      lowSquares += square & 0xffffffffu;
      highSquares += square >> 32;
    }
    block.sum = sum;
    block.squares = (imaproc::glbmsr::WideInteger(highSquares) << 32) + lowSquares;
  }
  block.minimum = low;
  block.maximum = high;
  add(sums, block);
}

constexpr int laneCount = 16;
constexpr int wideLanes = lanesOf<FloatV> / 2;  ///< doubles in a register
constexpr int registers = laneCount / wideLanes;
using HalfV = float __attribute__((vector_size(sizeof(FloatV) / 2)));
using DoubleV = double __attribute__((vector_size(sizeof(FloatV))));

inline DoubleV loadDoubles(const unsigned char* samples, int i) {
  return __builtin_convertvector(readSample<HalfV>(samples + i * ptrdiff_t(sizeof(float)), 0), DoubleV);
}

/// The sum of term(x) over the block, where term takes vectors and single doubles.
template <class Term>
inline double sumOf(const unsigned char* samples, int n, const Term& term) {
  DoubleV sums[registers] = {};
  int i = 0;
  for (; i + laneCount <= n; i += laneCount) {
    // The memory would stand still while a block is gone through again. Beyond the image this does nothing.
    __builtin_prefetch(samples + i * ptrdiff_t(sizeof(float)) + blockBytes);
#pragma GCC unroll 8
    for (int r = 0; r < registers; ++r) sums[r] += term(loadDoubles(samples, i + r * wideLanes));
  }
  double lanes[laneCount];
  __builtin_memcpy(lanes, sums, sizeof lanes);
  for (int lane = 0; i + lane < n; ++lane) lanes[lane] += term(double(readSample<float>(samples, i + lane)));
  for (int half = laneCount / 2; half > 0; half /= 2)
    for (int lane = 0; lane < half; ++lane) lanes[lane] += lanes[lane + half];
  return lanes[0];
}

/// A comparison with NaN is false: NaN never gets in.
inline void findRange(const unsigned char* samples, int n, float& minimum, float& maximum) {
  constexpr int step = 4 * lanesOf<FloatV>;
  FloatV low[4], high[4];
  for (int r = 0; r < 4; ++r) {
    low[r] = splat<FloatV>(minimum);
    high[r] = splat<FloatV>(maximum);
  }
  int i = 0;
  for (; i + step <= n; i += step)
#pragma GCC unroll 4
    for (int r = 0; r < 4; ++r) {
      const FloatV v = readSample<FloatV>(samples + (i + r * lanesOf<FloatV>)*ptrdiff_t(sizeof(float)), 0);
      low[r] = v < low[r] ? v : low[r];
      high[r] = v > high[r] ? v : high[r];
    }
  for (int r = 0; r < 4; ++r)
    for (int lane = 0; lane < lanesOf<FloatV>; ++lane) {
      minimum = low[r][lane] < minimum ? low[r][lane] : minimum;
      maximum = high[r][lane] > maximum ? high[r][lane] : maximum;
    }
  for (; i < n; ++i) {
    const float v = readSample<float>(samples, i);
    minimum = v < minimum ? v : minimum;
    maximum = v > maximum ? v : maximum;
  }
}

template <class T>
[[gnu::noinline]] void addBlock(RealSums& sums, const unsigned char* samples, int n) {
  const double sum = sumOf(samples, n, [](auto x) { return x; });
  const double mean = sum / double(n);
  const double squares = sumOf(samples, n, [mean](auto x) {
    const auto deviation = x - mean;
    return deviation * deviation;
  });
  RealSums block = {sums.minimum, sums.maximum, static_cast<unsigned long long>(n), {sum, 0}, {squares, 0}};
  findRange(samples, n, block.minimum, block.maximum);
  add(sums, block);
}

/// Passes the samples of the strip on in blocks of blockBytes, the last one shorter. The buffer collects
/// those that span rows.
template <class T, class Sums>
void addStrip(Sums& sums, const image::StripSource& source, unsigned char* buffer) {
  constexpr ptrdiff_t size = sizeof(T), block = blockBytes / size;
  ptrdiff_t width = source.end[0] - source.begin[0], rows = source.end[1] - source.begin[1];
  if (source.rowStride == width * size) {  // without gaps they are one long row
    width *= rows;
    rows = 1;
  }
  ptrdiff_t kept = 0;
  for (ptrdiff_t z = source.begin[2]; z < source.end[2]; ++z)
    for (ptrdiff_t y = source.begin[1]; y < source.begin[1] + rows; ++y) {
      const unsigned char* row = image::sourceRow(source, y, z) + source.begin[0] * size;
      ptrdiff_t n = 0;
      for (ptrdiff_t x = 0; x < width; x += n) {
        if (kept == 0 && width - x >= block) {
          n = block;
          addBlock<T>(sums, row + x * size, int(block));
          continue;
        }
        n = smaller(width - x, block - kept);
        __builtin_memcpy(buffer + kept * size, row + x * size, size_t(n * size));
        kept += n;
        if (kept < block) continue;
        addBlock<T>(sums, buffer, int(block));
        kept = 0;
      }
    }
  if (kept > 0) addBlock<T>(sums, buffer, int(kept));
}

template <class T>
const char* measure(const ProcessingInfo& info) {
  StatsMsrSums sums = imaproc::glbmsr::emptySums();
  if constexpr (T(0.5) != 0)
    addStrip<T>(sums.reals, info.sources[0], info.scratch);
  else
    addStrip<T>(sums.integers, info.sources[0], info.scratch);
  *static_cast<const StatsMsrParameters*>(info.parameters)->sums = sums;
  return nullptr;
}

constexpr processor::KernelTable makeTable() {
  processor::KernelTable table = {};
  table.scratchSize = [](const ProcessingInfo&) -> size_t { return blockBytes; };
  table.inputFunctions[6] = measure<float>;
#if !defined(VEXO_KERNEL_SET_avx)  // which has no integer vectors
  table.inputFunctions[0] = measure<unsigned char>;
  table.inputFunctions[1] = measure<signed char>;
  table.inputFunctions[2] = measure<unsigned short>;
  table.inputFunctions[3] = measure<short>;
  table.inputFunctions[4] = measure<unsigned>;
  table.inputFunctions[5] = measure<int>;
#endif
  return table;
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::glbmsr::StatsMsr2dLvl3>::table() {
  static constexpr processor::KernelTable table = makeTable();
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
