#pragma once

#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <string>

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

  LogMessageManager();
  ~LogMessageManager();

  /// False (and nothing changed) when the pair already carries another text.
  BoolResult addMessage(const std::string& domain, unsigned value, const std::string& text);
  /// The text, or an empty one when the pair is unknown.
  std::string getMessage(const std::string& domain, unsigned value) const;

private:
  struct Texts;
  const std::unique_ptr<Texts> _texts;
};

/// Anything that a stream takes, for as long as the call lasts that makes a text of it.
class VEXO_API MessageValue {
public:
  MessageValue(const char* text) : _value(text), _write(&writeText) {}
  template <class T>
  MessageValue(const T& value) : _value(&value), _write(&write<T>) {}
  friend VEXO_API std::ostream& operator<<(std::ostream& out, const MessageValue& value);

private:
  static void writeText(std::ostream& out, const void* text);
  template <class T>
  static void write(std::ostream& out, const void* value);

  const void* _value;
  void (*_write)(std::ostream& out, const void* value);
};
template <class T>
void MessageValue::write(std::ostream& out, const void* value) {
  out << *static_cast<const T*>(value);
}
// The usual ones are written where the streams are known: reading those here would be dear.
extern template VEXO_API void MessageValue::write<bool>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<char>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<short>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<unsigned short>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<int>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<unsigned>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<long>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<unsigned long>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<float>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<double>(std::ostream&, const void*);
extern template VEXO_API void MessageValue::write<std::string>(std::ostream&, const void*);

/// The values one after the other, each as a stream writes it.
VEXO_API std::string joinValues(std::initializer_list<MessageValue> values);

/// The text of one message with its %1%-style placeholders filled. Formatting never throws: a text that
/// cannot be formatted becomes "Exception thrown while processing message".
class VEXO_API LogMessageFormater {
public:
  explicit LogMessageFormater(const LogMessageManager& manager);
  ~LogMessageFormater();

  template <class Enum>
  LogMessageFormater& setMsgId(Enum value) {
    return setMsgId(typeName<Enum>(), static_cast<unsigned>(value));
  }
  LogMessageFormater& setMsgId(const std::string& domain, unsigned value) noexcept;
  LogMessageFormater& operator%(const MessageValue& value) noexcept;
  std::string str() const noexcept;

private:
  struct Format;
  const LogMessageManager& _manager;
  std::unique_ptr<Format> _format;  ///< null once something has failed
};

/// What is known of a message enumeration: the manager of its module and its table. A module says it by
/// messagesOf (Module.h), anything else by a specialisation with
///   static LogMessageManager& manager();
///   static ... messages();   (any iterable of pairs of value and text)
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
