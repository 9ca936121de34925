#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLog.h"

#include <log4cplus/logger.h>

namespace vexo::imaproc::filter {

VEXOIPLFilteringException::~VEXOIPLFilteringException() = default;

const std::string& getVEXOIPLFilteringLoggerName() {
  return FilteringModule::getLoggerName();
}

log4cplus::Logger getVEXOIPLFilteringLogger() {
  return getModuleLogger(FilteringModule::name);
}

LogMessageManager& getVEXOIPLFilteringLogMessageManager() {
  return FilteringModule::getMessageManager();
}

}  // namespace vexo::imaproc::filter
