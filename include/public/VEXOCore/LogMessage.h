#pragma once

#include <boost/format.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <map>
#include <string>
#include <utility>

#include "VEXOCore/BoolResult.h"
#include "VEXOCore/Export.h"
#include "VEXOCore/TypeName.h"

namespace vexo {

/// The user-visible texts of one module, keyed by (domain, value); a domain is the type name of an
/// enumeration.
class VEXO_API LogMessageManager {
public:
  /// The manager of a module, made on first use and kept until the process ends. Thread-safe.
  static LogMessageManager& getInstance(const std::string& moduleName);

  /// False (and nothing changed) when the pair already carries another text.
  BoolResult addMessage(const std::string& domain, unsigned value, const std::string& text);
  /// The text, or an empty one when the pair is unknown.
  std::string getMessage(const std::string& domain, unsigned value) const;

private:
  mutable boost::mutex _mutex;
  std::map<std::pair<std::string, unsigned>, std::string> _messages;
};

/// What a module states for each of its message enumerations:
///   static LogMessageManager& manager();
///   static const std::vector<std::pair<Enum, const char*>>& messages();   (any iterable of pairs)
template <class Enum>
struct MessageMap;

/// Registers the table of one enumeration, once; further calls return true at once.
template <class Enum>
class MsgMapRegistrator {
public:
  static BoolResult registerMessageMap() {
    static const auto& result = *new BoolResult([] {
      for (const auto& message : MessageMap<Enum>::messages()) {
        const BoolResult added = MessageMap<Enum>::manager().addMessage(
            typeName<Enum>(), static_cast<unsigned>(message.first), message.second);
        if (!added) return added;
      }
      return BoolResult(true);
    }());
    return result;
  }
};

/// The text of one message with its %1%-style placeholders filled. Formatting never throws: a text that
/// cannot be formatted becomes "Exception thrown while processing message".
class VEXO_API LogMessageFormater {
public:
  explicit LogMessageFormater(const LogMessageManager& manager) : _manager(manager) {}

  template <class Enum>
  LogMessageFormater& setMsgId(Enum value) {
    return setMsgId(typeName<Enum>(), static_cast<unsigned>(value));
  }
  LogMessageFormater& setMsgId(const std::string& domain, unsigned value) noexcept;

  template <class Arg>
  LogMessageFormater& operator%(const Arg& arg) noexcept {
    try {
      if (!_failed) _format % arg;
    } catch (...) {
      _failed = true;
    }
    return *this;
  }
  std::string str() const noexcept;

private:
  const LogMessageManager& _manager;
  boost::format _format;
  bool _failed = true;
};

/// The text of a registered message, its table registered first where that has not happened yet.
template <class Enum, class... Args>
std::string formatMessage(Enum value, const Args&... args) {
  MsgMapRegistrator<Enum>::registerMessageMap();
  LogMessageFormater formater(MessageMap<Enum>::manager());
  formater.setMsgId(value);
  (void)(formater % ... % args);
  return formater.str();
}

}  // namespace vexo
