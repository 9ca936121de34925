#include "VEXOCore/Log.h"

#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <mutex>
#include <shared_mutex>

namespace vexo {
namespace {

/// log4cplus goes at the end of the process, when threads may still have something to say.
std::shared_mutex& logMutex() {
  static auto& mutex = *new std::shared_mutex;
  return mutex;
}
bool logIsOver = false;

/// Made when this library is loaded, after log4cplus, so that it goes before.
const struct EndOfLog {
  EndOfLog() { logMutex(); }
  ~EndOfLog() {
    const std::unique_lock<std::shared_mutex> lock(logMutex());
    logIsOver = true;
  }
} endOfLog;

}  // namespace

const std::string& getBaseLoggerName() {
  static const auto& name = *new std::string("vexo");
  return name;
}

log4cplus::Logger getModuleLogger(const std::string& moduleName) {
  const std::shared_lock<std::shared_mutex> lock(logMutex());
  if (logIsOver) return {};
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
  const std::shared_lock<std::shared_mutex> lock(logMutex());
  if (!logIsOver && logger.isEnabledFor(log4cplus::ERROR_LOG_LEVEL))
    logger.forcedLog(log4cplus::ERROR_LOG_LEVEL, text, where.file_name(), static_cast<int>(where.line()),
                     where.function_name());
}

void logError(const char* moduleName, const std::string& text, const boost::source_location& where) {
  logError(getModuleLogger(moduleName), text, where);
}

}  // namespace vexo
