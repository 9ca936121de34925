#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistoO1Median2dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<HistoO1Median2dImgLvl3> registrator;
const processor::KernelRegistrator kernels(HistoO1Median2dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<HistoO1Median2dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
