#pragma once

#include "VEXOIPL/VEXOIPLGlobalMeasure/VEXOIPLGlobalMeasureLog.h"

namespace vexo::imaproc::glbmsr {

/// Tool tips of processors.
enum class eProcessorMessage {
#define VEXO_PROCESSOR(Name, number, toolTip) Name = number,
#include "VEXOIPL/VEXOIPLGlobalMeasure/ProcessorMessages.inc"
};

VEXO_API MessageTable<GlobalMeasureModule, eProcessorMessage> messagesOf(eProcessorMessage);

}  // namespace vexo::imaproc::glbmsr
