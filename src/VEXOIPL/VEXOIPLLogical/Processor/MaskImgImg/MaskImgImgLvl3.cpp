#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::logic {
namespace {

const processor::ProcessorRegistrator<MaskImgImgLvl3> registrator;
const processor::ProcessorRegistrator<MaskImgImg3dLvl3> registrator3d;

const auto objects = processor::kernelObjects<MaskImgImgLvl3>();
const processor::KernelRegistrator kernels(MaskImgImgLvl3::retrieveFunctionSelector(), objects);
const processor::KernelRegistrator kernels3d(MaskImgImg3dLvl3::retrieveFunctionSelector(), objects);

}  // namespace
}  // namespace vexo::imaproc::logic
