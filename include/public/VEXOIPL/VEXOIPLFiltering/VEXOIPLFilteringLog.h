#pragma once

#include "VEXOCore/Module.h"

namespace vexo::imaproc::filter {

/// The exception that the filtering module raises.
class VEXO_API VEXOIPLFilteringException : public BaseException {
public:
  using BaseException::BaseException;
  ~VEXOIPLFilteringException() override;
};

struct FilteringModule : Module<FilteringModule> {
  static constexpr char name[] = "VEXOIPLFiltering";
  using Exception = VEXOIPLFilteringException;
};

/// getBaseLoggerName() + ".VEXOIPLFiltering"
VEXO_API const std::string& getVEXOIPLFilteringLoggerName();
VEXO_API log4cplus::Logger getVEXOIPLFilteringLogger();
/// LogMessageManager::getInstance("VEXOIPLFiltering"): the texts of the module.
VEXO_API LogMessageManager& getVEXOIPLFilteringLogMessageManager();

}  // namespace vexo::imaproc::filter
