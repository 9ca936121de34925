#pragma once

#include "VEXOCore/Log.h"

#include <utility>
#include <vector>

#include "VEXOCore/Export.h"
#include "VEXOCore/LogMessage.h"

namespace vexo {

/// User-visible messages of the serialization module.
enum class eSerializationMessage : unsigned {
  NewerVersion = 25,  ///< name of the item, version in the archive, version of the item
};

template <>
struct VEXO_API MessageMap<eSerializationMessage> {
  static LogMessageManager& manager();
  static const std::vector<std::pair<eSerializationMessage, const char*>>& messages();
};

VEXO_API log4cplus::Logger getSerializationLogger();

}  // namespace vexo
