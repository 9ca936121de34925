#include "VEXOProcessing/ProcessingMessages.h"

#include <log4cplus/logger.h>

namespace vexo::processor {

MessageTable<ProcessingModule, eProcessorMessage> messagesOf(eProcessorMessage) {
  static constexpr Message<eProcessorMessage> table[] = {
      {eProcessorMessage::NotInitialised, "%1% is not initialised"},
      {eProcessorMessage::MissingInput, "%1%: the input %2% is not set"},
      {eProcessorMessage::NoInitializer, "%1%: the output %2% is not set and cannot be created"},
      {eProcessorMessage::NoSuchAttribute, "%1% has no attribute %2%"},
      {eProcessorMessage::OverlappingImages,
       "%1%: %2% and %3% overlap in memory; only an input may share it, as the very same image"},
      {eProcessorMessage::NoFunction, "%1% has no kernel for the sample types (%2%) %3%"},
      {eProcessorMessage::UnevenSplits, "the splits of a dispatcher disagree: %1%"},
      {eProcessorMessage::WrongProcessor, "a split serves another processor: %1%"},
      {eProcessorMessage::UnknownProcessor, "no processor is registered as '%1%'; %2% are registered"},
      {eProcessorMessage::NotSerialisable, "%1%: archive refused: %2%"},
      {eProcessorMessage::ProviderFailed, "%1%: %2%"},
      {eProcessorMessage::RuleFailed, "%1%: %2%"},
      {eProcessorMessage::StillRunning, "%1% is running: wait for the end of the run"},
      {eProcessorMessage::NotSet, "%1% is not set"},
      {eProcessorMessage::NullInput, "Input attribute should not be null"},
      {eProcessorMessage::RefusedValue, "%1%: the value is refused: %2%"},
  };
  return table;
}

log4cplus::Logger getProcessingLogger() {
  return getModuleLogger(ProcessingModule::name);
}

namespace {
const bool registered = registerMessages<eProcessorMessage>();
}

}  // namespace vexo::processor
