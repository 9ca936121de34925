#include "VEXOIPL/VEXOIPLGlobalMeasure/VEXOIPLGlobalMeasureLog.h"

#include <log4cplus/logger.h>

namespace vexo::imaproc::glbmsr {

VEXOIPLGlobalMeasureException::~VEXOIPLGlobalMeasureException() = default;

const std::string& getVEXOIPLGlobalMeasureLoggerName() {
  static const auto& name = *new std::string(getBaseLoggerName() + ".VEXOIPLGlobalMeasure");
  return name;
}

log4cplus::Logger getVEXOIPLGlobalMeasureLogger() {
  return getModuleLogger("VEXOIPLGlobalMeasure");
}

LogMessageManager& getVEXOIPLGlobalMeasureLogMessageManager() {
  return LogMessageManager::getInstance("VEXOIPLGlobalMeasure");
}

}  // namespace vexo::imaproc::glbmsr
