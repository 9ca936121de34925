#include "VEXOIPL/VEXOIPLGlobalMeasure/VEXOIPLGlobalMeasureLog.h"

#include <log4cplus/logger.h>

namespace vexo::imaproc::glbmsr {

VEXOIPLGlobalMeasureException::~VEXOIPLGlobalMeasureException() = default;

const std::string& getVEXOIPLGlobalMeasureLoggerName() {
  return GlobalMeasureModule::getLoggerName();
}

log4cplus::Logger getVEXOIPLGlobalMeasureLogger() {
  return getModuleLogger(GlobalMeasureModule::name);
}

LogMessageManager& getVEXOIPLGlobalMeasureLogMessageManager() {
  return GlobalMeasureModule::getMessageManager();
}

}  // namespace vexo::imaproc::glbmsr
