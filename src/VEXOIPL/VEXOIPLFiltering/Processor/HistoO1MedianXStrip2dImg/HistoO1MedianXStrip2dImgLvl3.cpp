#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<HistoO1MedianXStrip2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(HistoO1MedianXStrip2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<HistoO1MedianXStrip2dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
