#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLog.h"

#include <log4cplus/logger.h>

namespace vexo::imaproc::logic {

VEXOIPLLogicalException::~VEXOIPLLogicalException() = default;

const std::string& getVEXOIPLLogicalLoggerName() {
  return LogicalModule::getLoggerName();
}

log4cplus::Logger getVEXOIPLLogicalLogger() {
  return getModuleLogger(LogicalModule::name);
}

LogMessageManager& getVEXOIPLLogicalLogMessageManager() {
  return LogicalModule::getMessageManager();
}

}  // namespace vexo::imaproc::logic
