// Choice between two images by a mask, for one strip.
//
// Pieces of rows are brought to the output's type, unless they have it, and then chosen by size of sample
// only: so 49 conversions and three choices serve all combinations of types.

#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgParameters.h"
#include "VEXOProcessing/Kernel/Convert.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::logic {
class MaskImgImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

using imaproc::logic::MaskImgImgParameters;
using processor::ProcessingInfo;

constexpr ptrdiff_t pieceLength = 1024;  ///< samples; a multiple of convertedAtOnce
static_assert(pieceLength % convertedAtOnce == 0);

template <class A, class B>
constexpr bool isSame = false;
template <class A>
constexpr bool isSame<A, A> = true;

template <size_t size>
struct UnsignedOf;
template <>
struct UnsignedOf<1> {
  using Type = unsigned char;
};
template <>
struct UnsignedOf<2> {
  using Type = unsigned short;
};
template <>
struct UnsignedOf<4> {
  using Type = unsigned;
};

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

using Converter = const unsigned char* (*)(unsigned char* piece, const unsigned char* samples, ptrdiff_t n);
template <class TOut>
constexpr Converter converters[processor::kernelTypeCount] = {
    convertPiece<unsigned char, TOut>, convertPiece<signed char, TOut>, convertPiece<unsigned short, TOut>,
    convertPiece<short, TOut>,         convertPiece<unsigned, TOut>,    convertPiece<int, TOut>,
    convertPiece<float, TOut>};

/// In place, out is one of the inputs. Not inlined: the compiler then makes loops that take a quarter longer.
template <class U>
[[gnu::noinline]] void choose(unsigned char* out, const unsigned char* first, const unsigned char* second,
                              const unsigned char* mask, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    U a, b;
    __builtin_memcpy(&a, first + i * ptrdiff_t(sizeof a), sizeof a);
    __builtin_memcpy(&b, second + i * ptrdiff_t(sizeof b), sizeof b);
    const U chosen = mask[i] ? a : b;
    __builtin_memcpy(out + i * ptrdiff_t(sizeof chosen), &chosen, sizeof chosen);
  }
}

template <class TIn, class TOut>
const char* maskImages(const ProcessingInfo& info) {
  const image::StripSource &first = info.sources[0], &second = info.sources[1], &mask = info.sources[2];
  const image::StripTarget& target = info.targets[0];
  const Converter convertSecond =
      converters<TOut>[static_cast<const MaskImgImgParameters*>(info.parameters)->secondType];
  unsigned char* firstPiece = info.scratch;
  unsigned char* secondPiece = firstPiece + pieceLength * ptrdiff_t(sizeof(float));
  for (ptrdiff_t z = first.begin[2]; z < first.end[2]; ++z)
    for (ptrdiff_t y = first.begin[1]; y < first.end[1]; ++y) {
      const unsigned char* a = image::sourceRow(first, y, z);
      const unsigned char* b = image::sourceRow(second, y, z);
      const unsigned char* chosen = image::sourceRow(mask, y, z);
      unsigned char* out = image::targetRow(target, y, z) - target.begin[0] * target.sampleSize;
      for (ptrdiff_t x = first.begin[0]; x < first.end[0]; x += pieceLength) {
        const ptrdiff_t n = smaller(pieceLength, first.end[0] - x);
        choose<typename UnsignedOf<sizeof(TOut)>::Type>(
            out + x * target.sampleSize, convertPiece<TIn, TOut>(firstPiece, a + x * first.sampleSize, n),
            convertSecond(secondPiece, b + x * second.sampleSize, n), chosen + x, n);
      }
    }
  return nullptr;
}

template <class TIn>
constexpr void addInput(processor::KernelTable& table, int in) {
  table.functions[in][0] = maskImages<TIn, unsigned char>;
  table.functions[in][1] = maskImages<TIn, signed char>;
  table.functions[in][2] = maskImages<TIn, unsigned short>;
  table.functions[in][3] = maskImages<TIn, short>;
  table.functions[in][4] = maskImages<TIn, unsigned>;
  table.functions[in][5] = maskImages<TIn, int>;
  table.functions[in][6] = maskImages<TIn, float>;
}

constexpr processor::KernelTable makeTable() {
  processor::KernelTable table = {};
#if !defined(VEXO_KERNEL_SET_avx)  // which has no integer vectors
  table.scratchSize = [](const ProcessingInfo&) -> size_t { return 2 * pieceLength * sizeof(float); };
  addInput<unsigned char>(table, 0);
  addInput<signed char>(table, 1);
  addInput<unsigned short>(table, 2);
  addInput<short>(table, 3);
  addInput<unsigned>(table, 4);
  addInput<int>(table, 5);
  addInput<float>(table, 6);
#endif
  return table;
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::logic::MaskImgImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeTable();
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
