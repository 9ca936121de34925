#include "VEXOCore/LogMessage.h"

#include <boost/format.hpp>
#include <map>
#include <mutex>
#include <sstream>
#include <utility>

namespace vexo {

struct LogMessageManager::Texts {
  std::mutex mutex;
  std::map<std::pair<std::string, unsigned>, std::string> byId;
};

LogMessageManager::LogMessageManager() : _texts(std::make_unique<Texts>()) {}
LogMessageManager::~LogMessageManager() = default;

LogMessageManager& LogMessageManager::getInstance(const std::string& moduleName) {
  // Never destroyed: messages may be needed while the last libraries unload.
  static auto& mutex = *new std::mutex;
  static auto& managers = *new std::map<std::string, LogMessageManager>;
  const std::lock_guard<std::mutex> lock(mutex);
  return managers[moduleName];
}

BoolResult LogMessageManager::addMessage(const std::string& domain, unsigned value, const std::string& text) {
  const std::lock_guard<std::mutex> lock(_texts->mutex);
  const auto added = _texts->byId.emplace(std::make_pair(domain, value), text);
  if (added.second || added.first->second == text) return true;
  return BoolResult::failure("message " + std::to_string(value) + " of " + domain + " is already \"" +
                             added.first->second + "\"");
}

std::string LogMessageManager::getMessage(const std::string& domain, unsigned value) const {
  const std::lock_guard<std::mutex> lock(_texts->mutex);
  const auto found = _texts->byId.find(std::make_pair(domain, value));
  return found == _texts->byId.end() ? std::string() : found->second;
}

template void MessageValue::write<bool>(std::ostream&, const void*);
template void MessageValue::write<char>(std::ostream&, const void*);
template void MessageValue::write<short>(std::ostream&, const void*);
template void MessageValue::write<unsigned short>(std::ostream&, const void*);
template void MessageValue::write<int>(std::ostream&, const void*);
template void MessageValue::write<unsigned>(std::ostream&, const void*);
template void MessageValue::write<long>(std::ostream&, const void*);
template void MessageValue::write<unsigned long>(std::ostream&, const void*);
template void MessageValue::write<float>(std::ostream&, const void*);
template void MessageValue::write<double>(std::ostream&, const void*);
template void MessageValue::write<std::string>(std::ostream&, const void*);

void MessageValue::writeText(std::ostream& out, const void* text) {
  out << static_cast<const char*>(text);
}

std::ostream& operator<<(std::ostream& out, const MessageValue& value) {
  value._write(out, value._value);
  return out;
}

std::string joinValues(std::initializer_list<MessageValue> values) {
  std::ostringstream text;
  for (const MessageValue& value : values) text << value;
  return text.str();
}

struct LogMessageFormater::Format {
  boost::format text;
};

LogMessageFormater::LogMessageFormater(const LogMessageManager& manager) : _manager(manager) {}
LogMessageFormater::~LogMessageFormater() = default;

LogMessageFormater& LogMessageFormater::setMsgId(const std::string& domain, unsigned value) noexcept {
  try {
    _format = nullptr;
    const std::string text = _manager.getMessage(domain, value);
    if (!text.empty()) _format = std::make_unique<Format>(Format{boost::format(text)});
  } catch (...) {
  }
  return *this;
}

LogMessageFormater& LogMessageFormater::operator%(const MessageValue& value) noexcept {
  try {
    if (_format) _format->text % value;
  } catch (...) {
    _format = nullptr;
  }
  return *this;
}

std::string LogMessageFormater::str() const noexcept {
  try {
    if (_format) return _format->text.str();
  } catch (...) {
  }
  return "Exception thrown while processing message";
}

}  // namespace vexo
