#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionLevels.h"

#include <algorithm>

namespace vexo::imaproc::filter {
namespace {

template <class Kernel>
StripCut cutFor(const Kernel& kernel, image::eStripParsingDirection direction) {
  using image::eStripAllocationType;
  return {kernelMargins(kernel),
          runsInPlace(kernel) ? eStripAllocationType::View : eStripAllocationType::OwnBuffer, direction};
}

}  // namespace

StripCut convolutionCut(const KernelXY& kernel) {
  return cutFor(kernel, image::eStripParsingDirection::Y);
}

StripCut convolutionCut(const KernelXYZ& kernel) {
  StripCut cut = cutFor(kernel, image::eStripParsingDirection::Z);
  const image::StripMargins& m = cut.margins;
  const bool alongZ = std::max({m.before[0], m.after[0], m.before[1], m.after[1]}) == 0;
  if (alongZ) cut.direction = image::eStripParsingDirection::Y;
  return cut;
}

}  // namespace vexo::imaproc::filter
