#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLvl2.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<PearsonColocalization3dImgLvl2> registrator;

}  // namespace
}  // namespace vexo::imaproc::filter
