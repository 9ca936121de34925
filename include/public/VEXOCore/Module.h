#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "VEXOCore/Log.h"

namespace vexo {

/// The log, the messages and the exception of a module, which says no more than its name and what it raises:
///
///   struct FilteringModule : Module<FilteringModule> {
///     static constexpr char name[] = "VEXOIPLFiltering";
///     using Exception = VEXOIPLFilteringException;
///   };
///
/// and, in the namespace of each of its message enumerations, the texts:
///
///   MessageTable<FilteringModule, eAttributeMessage> messagesOf(eAttributeMessage);
template <class Derived>
struct Module {
  static const std::string& getLoggerName() {
    static const auto& loggerName = *new std::string(getBaseLoggerName() + "." + Derived::name);
    return loggerName;
  }
  static LogMessageManager& getMessageManager() { return LogMessageManager::getInstance(Derived::name); }

  /// Raises a text as the exception of the module, on its logger.
  [[noreturn]] static void raise(const boost::source_location& where, std::string text) {
    vexo::raise<typename Derived::Exception>(Derived::name, where, std::move(text));
  }
};

template <class Enum>
using Message = std::pair<Enum, const char*>;

/// The messages of one enumeration of the module M: an array that lives as long as the library.
template <class M, class Enum>
class MessageTable {
public:
  using Module = M;

  MessageTable() = default;
  template <std::size_t count>
  MessageTable(const Message<Enum> (&messages)[count]) : _begin(messages), _end(messages + count) {}
  const Message<Enum>* begin() const { return _begin; }
  const Message<Enum>* end() const { return _end; }

private:
  const Message<Enum>* _begin = nullptr;
  const Message<Enum>* _end = nullptr;
};

template <class Enum>
struct MessageMap {
  using Module = typename decltype(messagesOf(Enum()))::Module;
  static LogMessageManager& manager() { return Module::getMessageManager(); }
  static auto messages() { return messagesOf(Enum()); }
};

/// For a static object of a module: its tables are registered when the library is loaded.
template <class... Enums>
bool registerMessages() {
  return (static_cast<bool>(MsgMapRegistrator<Enums>::registerMessageMap()) & ...);
}

/// Raises a message of a module's table, as the exception of that module and on its logger.
template <class Enum, class... Args>
[[noreturn]] void raiseMessage(const boost::source_location& where, Enum value, const Args&... args) {
  MessageMap<Enum>::Module::raise(where, formatMessage(value, args...));
}

}  // namespace vexo
