#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "VEXOProcessing/Processor.h"

namespace vexo::processor {

/// The processor classes that are loaded, by qualified type name. Thread-safe.
class VEXO_API ProcessorFactory {
public:
  struct ProcessorInfo {
    BaseDynamicObject* (*newCreator)();
    boost::shared_ptr<BaseDynamicObject> (*sharedCreator)();
  };

  template <class T>
  static void registerProcessor() {
    registerProcessor(T::getTypeName(),
                      {DynamicRegistrator<T>::newCreatorFcn(), DynamicRegistrator<T>::sharedCreatorFcn()});
  }
  static void registerProcessor(const std::string& typeName, const ProcessorInfo& info);
  static void unRegisterProcessor(const std::string& typeName);

  /// A new processor, not initialised. Throws when no class of that name is registered.
  static boost::shared_ptr<BaseProcessor> createProcessor(const std::string& typeName);
  static bool isRegistered(const std::string& typeName);
  /// All names, sorted.
  static std::vector<std::string> getTypeNames();
};

/// Keeps a class registered while it exists; each class has a static one in its source file.
template <class T>
class ProcessorRegistrator {
public:
  ProcessorRegistrator() { ProcessorFactory::registerProcessor<T>(); }
  ~ProcessorRegistrator() { ProcessorFactory::unRegisterProcessor(T::getTypeName()); }
  ProcessorRegistrator(const ProcessorRegistrator&) = delete;
  ProcessorRegistrator& operator=(const ProcessorRegistrator&) = delete;
};

}  // namespace vexo::processor
