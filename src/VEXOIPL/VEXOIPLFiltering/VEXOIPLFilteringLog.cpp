#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLog.h"

#include <log4cplus/logger.h>

namespace vexo::imaproc::filter {

VEXOIPLFilteringException::~VEXOIPLFilteringException() = default;

const std::string& getVEXOIPLFilteringLoggerName() {
  static const auto& name = *new std::string(getBaseLoggerName() + ".VEXOIPLFiltering");
  return name;
}

log4cplus::Logger getVEXOIPLFilteringLogger() {
  return getModuleLogger("VEXOIPLFiltering");
}

LogMessageManager& getVEXOIPLFilteringLogMessageManager() {
  return LogMessageManager::getInstance("VEXOIPLFiltering");
}

}  // namespace vexo::imaproc::filter
