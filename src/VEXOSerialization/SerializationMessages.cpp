#include "VEXOSerialization/SerializationMessages.h"

#include <log4cplus/logger.h>

#include "VEXOCore/Log.h"

namespace vexo {

LogMessageManager& MessageMap<eSerializationMessage>::manager() {
  return LogMessageManager::getInstance("VEXOSerialization");
}

const std::vector<std::pair<eSerializationMessage, const char*>>&
MessageMap<eSerializationMessage>::messages() {
  static const auto& table = *new std::vector<std::pair<eSerializationMessage, const char*>>{
      {eSerializationMessage::NewerVersion,
       "%1%: version %2% of the archive is greater than the version %3% that this library reads"}};
  return table;
}

log4cplus::Logger getSerializationLogger() {
  return getModuleLogger("VEXOSerialization");
}

}  // namespace vexo
