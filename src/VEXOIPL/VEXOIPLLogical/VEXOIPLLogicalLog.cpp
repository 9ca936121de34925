#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLog.h"

#include <log4cplus/logger.h>

namespace vexo::imaproc::logic {

VEXOIPLLogicalException::~VEXOIPLLogicalException() = default;

const std::string& getVEXOIPLLogicalLoggerName() {
  static const auto& name = *new std::string(getBaseLoggerName() + ".VEXOIPLLogical");
  return name;
}

log4cplus::Logger getVEXOIPLLogicalLogger() {
  return getModuleLogger("VEXOIPLLogical");
}

LogMessageManager& getVEXOIPLLogicalLogMessageManager() {
  return LogMessageManager::getInstance("VEXOIPLLogical");
}

}  // namespace vexo::imaproc::logic
