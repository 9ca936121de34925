#pragma once

#include <log4cplus/logger.h>

#include <sstream>
#include <string>
#include <utility>

#include "VEXOCore/BaseException.h"
#include "VEXOCore/LogMessage.h"
#include "VEXOCore/Quote.h"

namespace vexo {

/// "vexo": every module logs to a child of this logger. It carries a silent appender, so that a program that
/// configures no logging sees none.
VEXO_API const std::string& getBaseLoggerName();
/// The logger of a module: getBaseLoggerName() + "." + moduleName; one that logs nothing once the static
/// objects of the process are being destroyed.
VEXO_API log4cplus::Logger getModuleLogger(const std::string& moduleName);

/// Logs at ERROR level with the source location, when the logger is enabled for it.
VEXO_API void logError(const log4cplus::Logger& logger, const std::string& text,
                       const boost::source_location& where);

/// How every error of the library is raised: the text, its control characters escaped,
/// is logged at ERROR level, then thrown with its place.
template <class Exception>
[[noreturn]] void raise(const log4cplus::Logger& logger, const boost::source_location& where,
                        std::string text) {
  text = escapeControls(text);
  logError(logger, text, where);
  throw Exception(std::move(text), where);
}

/// Raises a message of a registered table.
template <class Exception, class Enum, class... Args>
[[noreturn]] void raiseMessage(const log4cplus::Logger& logger, const boost::source_location& where,
                               Enum value, const Args&... args) {
  raise<Exception>(logger, where, formatMessage(value, args...));
}

/// Raises a text of the framework that no table holds; the arguments are joined as a stream joins them.
template <class... Args>
[[noreturn]] void raiseError(const boost::source_location& where, const char* moduleName,
                             const Args&... args) {
  std::ostringstream text;
  (text << ... << args);
  raise<BaseException>(getModuleLogger(moduleName), where, text.str());
}

}  // namespace vexo
