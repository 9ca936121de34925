#include "Processors.h"

#include "VEXOCore/Log.h"
#include "VEXOCore/Quote.h"
#include "VEXOCore/TypeName.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "Words.h"

namespace vexo::app {

using processor::ProcessorFactory;

namespace {

const std::string firstLevel = "Lvl1";

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string withoutFirstLevel(const std::string& name) {
  return endsWith(name, firstLevel) ? name.substr(0, name.size() - firstLevel.size()) : name;
}

bool isNamedBy(const std::string& typeName, const std::string& word) {
  for (const std::string& name : {typeName, withoutFirstLevel(typeName)})
    if (name == word || endsWith(name, "::" + word)) return true;
  return false;
}

}  // namespace

std::vector<boost::shared_ptr<processor::BaseProcessor>> createProcessors(bool allLevels) {
  std::vector<boost::shared_ptr<processor::BaseProcessor>> processors;
  for (const std::string& typeName : ProcessorFactory::getTypeNames())
    if (allLevels || endsWith(typeName, firstLevel))
      processors.push_back(ProcessorFactory::createProcessor(typeName));
  return processors;
}

boost::shared_ptr<processor::BaseProcessor> createProcessor(const std::string& word) {
  std::vector<std::string> found, names;
  for (const std::string& typeName : ProcessorFactory::getTypeNames()) {
    if (isNamedBy(typeName, word)) found.push_back(typeName);
    names.push_back(withoutFirstLevel(shortTypeName(typeName)));
  }
  if (found.empty()) refuseWord("processor", withoutFirstLevel(word), names);
  if (found.size() > 1) throw UsageError(quote(word) + " may be " + found[0] + " or " + found[1]);
  const auto processor = ProcessorFactory::createProcessor(found.front());
  if (const BoolResult ready = processor->init(); !ready)
    raiseError(VEXO_HERE, "vexo", found.front(), ": ", ready.getMessage());
  return processor;
}

}  // namespace vexo::app
