#include "VEXOIPL/VEXOIPLGlobalMeasure/VEXOIPLGlobalMeasureLogMessages.h"

namespace vexo::imaproc::glbmsr {

MessageTable<GlobalMeasureModule, eProcessorMessage> messagesOf(eProcessorMessage) {
  static constexpr Message<eProcessorMessage> table[] = {
#define VEXO_PROCESSOR(Name, number, toolTip) {eProcessorMessage::Name, toolTip},
#include "VEXOIPL/VEXOIPLGlobalMeasure/ProcessorMessages.inc"
  };
  return table;
}

namespace {
const bool registered = registerMessages<eProcessorMessage>();
}

}  // namespace vexo::imaproc::glbmsr
