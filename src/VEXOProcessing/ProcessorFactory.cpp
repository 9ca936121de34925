#include "VEXOProcessing/ProcessorFactory.h"

#include <log4cplus/logger.h>

#include <map>
#include <mutex>

#include "VEXOCore/Quote.h"

namespace vexo::processor {
namespace {

struct Registry {
  std::mutex mutex;
  std::map<std::string, ProcessorFactory::ProcessorInfo> infos;
};

Registry& registry() {
  // Never destroyed: libraries unregister their classes when they unload, in any order.
  static auto& instance = *new Registry;
  return instance;
}

}  // namespace

void ProcessorFactory::registerProcessor(const std::string& typeName, const ProcessorInfo& info) {
  const std::lock_guard<std::mutex> lock(registry().mutex);
  registry().infos[typeName] = info;
}

void ProcessorFactory::unRegisterProcessor(const std::string& typeName) {
  // The library of the class is about to go: no run may be left in its code.
  core::ActionRunner::stopBackgroundRuns();
  const std::lock_guard<std::mutex> lock(registry().mutex);
  registry().infos.erase(typeName);
}

boost::shared_ptr<BaseProcessor> ProcessorFactory::createProcessor(const std::string& typeName) {
  ProcessorInfo info{};
  std::size_t count = 0;
  {
    const std::lock_guard<std::mutex> lock(registry().mutex);
    count = registry().infos.size();
    const auto found = registry().infos.find(typeName);
    if (found != registry().infos.end()) info = found->second;
  }
  if (!info.sharedCreator)
    raiseMessage<BaseException>(getProcessingLogger(), VEXO_HERE, eProcessorMessage::UnknownProcessor,
                                cut(typeName), count);
  return boost::static_pointer_cast<BaseProcessor>(info.sharedCreator());
}

bool ProcessorFactory::isRegistered(const std::string& typeName) {
  const std::lock_guard<std::mutex> lock(registry().mutex);
  return registry().infos.count(typeName) != 0;
}

std::vector<std::string> ProcessorFactory::getTypeNames() {
  const std::lock_guard<std::mutex> lock(registry().mutex);
  std::vector<std::string> names;
  for (const auto& entry : registry().infos) names.push_back(entry.first);
  return names;
}

}  // namespace vexo::processor
