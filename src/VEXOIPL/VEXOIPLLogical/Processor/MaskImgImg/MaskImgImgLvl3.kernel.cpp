// Choice between two images by a mask, for one strip.
//
// Pieces of rows are brought to the output's type, unless they have it, and then chosen by size of sample
// only: so 49 conversions and three choices serve all combinations of types.

#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgParameters.h"
#include "VEXOProcessing/Kernel/Integers.h"
#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/Samples.h"

namespace vexo::imaproc::logic {
class MaskImgImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

using imaproc::logic::MaskImgImgParameters;
using processor::ProcessingInfo;

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
    for (ptrdiff_t y = first.begin[1]; y < first.end[1] && !image::isStopped(first); ++y) {
      const unsigned char* a = image::sourceRow(first, y, z);
      const unsigned char* b = image::sourceRow(second, y, z);
      const unsigned char* chosen = image::sourceRow(mask, y, z);
      unsigned char* out = image::targetRow(target, y, z) - target.begin[0] * target.sampleSize;
      for (ptrdiff_t x = first.begin[0]; x < first.end[0]; x += pieceLength) {
        const ptrdiff_t n = smaller(pieceLength, first.end[0] - x);
        choose<typename IntegersOf<sizeof(TOut)>::Unsigned>(
            out + x * target.sampleSize, convertPiece<TIn, TOut>(firstPiece, a + x * first.sampleSize, n),
            convertSecond(secondPiece, b + x * second.sampleSize, n), chosen + x, n);
      }
    }
  return nullptr;
}

template <class TIn, class TOut>
struct MaskImages {
  static const char* run(const ProcessingInfo& info) { return maskImages<TIn, TOut>(info); }
};

size_t scratchSize(const ProcessingInfo&) {
  return 2 * pieceLength * sizeof(float);
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::logic::MaskImgImgLvl3>::table() {
  static constexpr processor::KernelTable table = makeSampleTable<MaskImages>(scratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
