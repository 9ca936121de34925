#pragma once

#include "VEXOCore/Module.h"

namespace vexo::imaproc::logic {

/// The exception that the logical module raises.
class VEXO_API VEXOIPLLogicalException : public BaseException {
public:
  using BaseException::BaseException;
  ~VEXOIPLLogicalException() override;
};

struct LogicalModule : Module<LogicalModule> {
  static constexpr char name[] = "VEXOIPLLogical";
  using Exception = VEXOIPLLogicalException;
};

/// getBaseLoggerName() + ".VEXOIPLLogical"
VEXO_API const std::string& getVEXOIPLLogicalLoggerName();
VEXO_API log4cplus::Logger getVEXOIPLLogicalLogger();
/// LogMessageManager::getInstance("VEXOIPLLogical"): the texts of the module.
VEXO_API LogMessageManager& getVEXOIPLLogicalLogMessageManager();

}  // namespace vexo::imaproc::logic
