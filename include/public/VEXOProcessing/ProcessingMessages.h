#pragma once

#include "VEXOCore/Module.h"

namespace vexo::processor {

struct ProcessingModule : Module<ProcessingModule> {
  static constexpr char name[] = "VEXOProcessing";
  using Exception = BaseException;
};

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
VEXO_API MessageTable<ProcessingModule, eProcessorMessage> messagesOf(eProcessorMessage);

VEXO_API log4cplus::Logger getProcessingLogger();

}  // namespace vexo::processor
