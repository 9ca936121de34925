#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/HistoOkMedian2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<HistoOkMedian2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(HistoOkMedian2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<HistoOkMedian2dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
