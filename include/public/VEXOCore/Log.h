#pragma once

#include <string>
#include <utility>

#include "VEXOCore/BaseException.h"
#include "VEXOCore/LogMessage.h"
#include "VEXOCore/Quote.h"

// <log4cplus/logger.h> is for sources that use a logger: it is dear to read.
namespace log4cplus {
class Logger;
}

namespace vexo {

/// "vexo": every module logs to a child of this logger. It carries a silent appender, so that a program that
/// configures no logging sees none.
VEXO_API const std::string& getBaseLoggerName();
/// The logger of a module: getBaseLoggerName() + "." + moduleName; one that logs nothing once the static
/// objects of the process are being destroyed.
VEXO_API log4cplus::Logger getModuleLogger(const std::string& moduleName);

/// Logs at ERROR level with the source location, when the logger, or that of the module, is enabled for it.
VEXO_API void logError(const log4cplus::Logger& logger, const std::string& text,
                       const boost::source_location& where);
VEXO_API void logError(const char* moduleName, const std::string& text, const boost::source_location& where);

/// How every error of the library is raised: the text, its control characters escaped, is logged at ERROR
/// level, then thrown with its place. `log` is a logger or the name of a module.
template <class Exception, class Log>
[[noreturn]] void raise(const Log& log, const boost::source_location& where, std::string text) {
  text = escapeControls(text);
  logError(log, text, where);
  throw Exception(std::move(text), where);
}

/// The same for an exception that carries something in front of its text.
template <class Exception, class First, class Log>
[[noreturn]] void raiseWith(const First& first, const Log& log, const boost::source_location& where,
                            std::string text) {
  text = escapeControls(text);
  logError(log, text, where);
  throw Exception(first, std::move(text), where);
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
  raise<BaseException>(moduleName, where, joinValues({args...}));
}

}  // namespace vexo
