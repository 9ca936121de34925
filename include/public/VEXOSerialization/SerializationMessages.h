#pragma once

#include "VEXOCore/Module.h"

namespace vexo {

struct SerializationModule : Module<SerializationModule> {
  static constexpr char name[] = "VEXOSerialization";
  using Exception = UnHandleException;
};

/// User-visible messages of the serialization module.
enum class eSerializationMessage : unsigned {
  NewerVersion = 25,  ///< name of the item, version in the archive, version of the item
};
VEXO_API MessageTable<SerializationModule, eSerializationMessage> messagesOf(eSerializationMessage);

VEXO_API log4cplus::Logger getSerializationLogger();

}  // namespace vexo
