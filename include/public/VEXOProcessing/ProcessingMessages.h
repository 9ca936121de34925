#pragma once

#include <utility>
#include <vector>

#include "VEXOCore/Log.h"

namespace vexo::processor {

/// Messages of the processing layer.
enum class eProcessorMessage {
  NotInitialised = 1,
  MissingInput = 2,
  NoInitializer = 3,
  NoSuchAttribute = 4,
  OverlappingImages = 5,
  NoFunction = 6,
  UnevenSplits = 7,
  WrongProcessor = 8,
  UnknownProcessor = 9,
  NotSerialisable = 10,
  ProviderFailed = 11,
  RuleFailed = 12,
  StillRunning = 13,
  NotSet = 14,
  NullInput = 15,
  RefusedValue = 33,
};

VEXO_API log4cplus::Logger getProcessingLogger();

}  // namespace vexo::processor

namespace vexo {
template <>
struct VEXO_API MessageMap<processor::eProcessorMessage> {
  static LogMessageManager& manager();
  static const std::vector<std::pair<processor::eProcessorMessage, const char*>>& messages();
};
}  // namespace vexo
