#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<HistoMedian3dImgLvl3> registrator;
const processor::KernelRegistrator kernels(HistoMedian3dImgLvl3::retrieveFunctionSelector(),
                                           processor::kernelObjects<HistoMedian3dImgLvl3>());

}  // namespace
}  // namespace vexo::imaproc::filter
