// Median by histograms, in constant time per pixel, for wide images, for one strip: the kernel of others.

#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::imaproc::filter {
class HistoO1Median2dImgLvl3;
class HistoO1MedianXStrip2dImgLvl3;
}  // namespace vexo::imaproc::filter

namespace vexo::VEXO_KERNEL_SET {

template <>
const processor::KernelTable& Kernels<imaproc::filter::HistoO1MedianXStrip2dImgLvl3>::table() {
  return Kernels<imaproc::filter::HistoO1Median2dImgLvl3>::table();
}

}  // namespace vexo::VEXO_KERNEL_SET
