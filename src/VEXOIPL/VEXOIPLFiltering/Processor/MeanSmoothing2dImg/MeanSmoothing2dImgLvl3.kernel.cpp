// Mean over a window, for one strip of planes: the teaching example of a kernel.
//
// A kernel source is compiled once per instruction set, each time into a namespace of its own. Its functions
// stand in an anonymous namespace, so that the linker can never pick one that was compiled for another
// processor; only the table at the end is seen from outside. For the same reason it uses no standard
// function, and it allocates nothing.

#include "VEXOProcessing/Kernel/KernelTable.h"
#include "VEXOProcessing/Kernel/RunningSum.h"
#include "VEXOProcessing/Kernel/Tables.h"

namespace vexo::imaproc::filter {
class MeanSmoothing2dImgLvl3;
}

namespace vexo::VEXO_KERNEL_SET {

namespace {

using processor::ProcessingInfo;

size_t scratchSize(const ProcessingInfo& info) {
  return size_t(WindowLayout(info.sources[0], info.inPlace).scratchFloats()) * sizeof(float);
}

const char* meanSmoothing(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  const WindowLayout l(s, info.inPlace);
  float* scratch = reinterpret_cast<float*>(info.scratch);
  StripLines lines{info};
  if (l.knlSizeX == 1 && l.knlSizeY == 1) {
    convertStrip(lines, s, scratch, l.tileWidth);
    return nullptr;
  }
  const float inverse = 1.0f / float(static_cast<long long>(l.knlSizeX) * l.knlSizeY);
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
    for (ptrdiff_t x = s.begin[0]; x < s.end[0]; x += l.tileWidth)
      runWindowTile(WindowTile<StripLines>(lines, s, l, inverse, x, z, scratch));
  return nullptr;
}

}  // namespace

template <>
const processor::KernelTable& Kernels<imaproc::filter::MeanSmoothing2dImgLvl3>::table() {
  static constexpr processor::KernelTable table =
      makeFloatLineTable<eConversion::Wrap>(meanSmoothing, scratchSize);
  return table;
}

}  // namespace vexo::VEXO_KERNEL_SET
