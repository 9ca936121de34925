#pragma once

#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLog.h"

namespace vexo::imaproc::logic {

/// Tool tips of processors.
enum class eProcessorMessage {
#define VEXO_PROCESSOR(Name, number, toolTip) Name = number,
#include "VEXOIPL/VEXOIPLLogical/ProcessorMessages.inc"
};

VEXO_API MessageTable<LogicalModule, eProcessorMessage> messagesOf(eProcessorMessage);

}  // namespace vexo::imaproc::logic
