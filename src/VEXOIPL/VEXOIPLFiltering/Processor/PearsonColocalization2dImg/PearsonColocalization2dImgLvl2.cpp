#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl2.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<PearsonColocalization2dImgLvl2> registrator;

}  // namespace
}  // namespace vexo::imaproc::filter
