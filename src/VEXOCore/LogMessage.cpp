#include "VEXOCore/LogMessage.h"

#include <memory>

namespace vexo {

LogMessageManager& LogMessageManager::getInstance(const std::string& moduleName) {
  // Never destroyed: messages may be needed while the last libraries unload.
  static auto& mutex = *new boost::mutex;
  static auto& managers = *new std::map<std::string, std::unique_ptr<LogMessageManager>>;
  boost::mutex::scoped_lock lock(mutex);
  auto& manager = managers[moduleName];
  if (!manager) manager = std::make_unique<LogMessageManager>();
  return *manager;
}

BoolResult LogMessageManager::addMessage(const std::string& domain, unsigned value, const std::string& text) {
  boost::mutex::scoped_lock lock(_mutex);
  const auto added = _messages.emplace(std::make_pair(domain, value), text);
  if (added.second || added.first->second == text) return true;
  return BoolResult::failure("message " + std::to_string(value) + " of " + domain + " is already \"" +
                             added.first->second + "\"");
}

std::string LogMessageManager::getMessage(const std::string& domain, unsigned value) const {
  boost::mutex::scoped_lock lock(_mutex);
  const auto found = _messages.find(std::make_pair(domain, value));
  return found == _messages.end() ? std::string() : found->second;
}

LogMessageFormater& LogMessageFormater::setMsgId(const std::string& domain, unsigned value) noexcept {
  try {
    const std::string text = _manager.getMessage(domain, value);
    _format = boost::format(text);
    _failed = text.empty();
  } catch (...) {
    _failed = true;
  }
  return *this;
}

std::string LogMessageFormater::str() const noexcept {
  try {
    if (!_failed) return _format.str();
  } catch (...) {
  }
  return "Exception thrown while processing message";
}

}  // namespace vexo
