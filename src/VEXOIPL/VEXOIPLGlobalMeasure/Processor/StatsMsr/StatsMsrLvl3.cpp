#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::glbmsr {
namespace {

const processor::ProcessorRegistrator<StatsMsr2dLvl3> registrator2d;
const processor::ProcessorRegistrator<StatsMsr3dLvl3> registrator3d;

const auto objects = processor::kernelObjects<StatsMsr2dLvl3>();
const processor::KernelRegistrator kernels2d(StatsMsr2dLvl3::retrieveFunctionSelector(), objects);
const processor::KernelRegistrator kernels3d(StatsMsr3dLvl3::retrieveFunctionSelector(), objects);

}  // namespace
}  // namespace vexo::imaproc::glbmsr
