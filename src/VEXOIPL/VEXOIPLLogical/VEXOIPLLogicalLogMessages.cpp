#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLogMessages.h"

namespace vexo::imaproc::logic {

MessageTable<LogicalModule, eProcessorMessage> messagesOf(eProcessorMessage) {
  static constexpr Message<eProcessorMessage> table[] = {
#define VEXO_PROCESSOR(Name, number, toolTip) {eProcessorMessage::Name, toolTip},
#include "VEXOIPL/VEXOIPLLogical/ProcessorMessages.inc"
  };
  return table;
}

namespace {
const bool registered = registerMessages<eProcessorMessage>();
}

}  // namespace vexo::imaproc::logic
