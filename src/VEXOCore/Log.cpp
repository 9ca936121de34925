#include "VEXOCore/Log.h"

#include <log4cplus/loggingmacros.h>
#include <log4cplus/nullappender.h>

namespace vexo {

const std::string& getBaseLoggerName() {
  static const auto& name = *new std::string("vexo");
  return name;
}

log4cplus::Logger getModuleLogger(const std::string& moduleName) {
  static const bool silenced = [] {
    // Without any appender log4cplus complains on standard error at the first message.
    log4cplus::Logger::getInstance(getBaseLoggerName())
        .addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    return true;
  }();
  (void)silenced;
  return log4cplus::Logger::getInstance(getBaseLoggerName() + "." + moduleName);
}

void logError(const log4cplus::Logger& logger, const std::string& text, const boost::source_location& where) {
  if (logger.isEnabledFor(log4cplus::ERROR_LOG_LEVEL))
    logger.forcedLog(log4cplus::ERROR_LOG_LEVEL, text, where.file_name(), static_cast<int>(where.line()),
                     where.function_name());
}

}  // namespace vexo
