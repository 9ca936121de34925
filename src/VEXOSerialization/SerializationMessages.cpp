#include "VEXOSerialization/SerializationMessages.h"

#include <log4cplus/logger.h>

namespace vexo {

MessageTable<SerializationModule, eSerializationMessage> messagesOf(eSerializationMessage) {
  static constexpr Message<eSerializationMessage> table[] = {
      {eSerializationMessage::NewerVersion,
       "%1%: version %2% of the archive is greater than the version %3% that this library reads"},
  };
  return table;
}

log4cplus::Logger getSerializationLogger() {
  return getModuleLogger(SerializationModule::name);
}

}  // namespace vexo
