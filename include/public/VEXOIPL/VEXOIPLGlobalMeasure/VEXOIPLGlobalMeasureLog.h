#pragma once

#include "VEXOCore/Module.h"

namespace vexo::imaproc::glbmsr {

/// The exception that the module of global measures raises.
class VEXO_API VEXOIPLGlobalMeasureException : public BaseException {
public:
  using BaseException::BaseException;
  ~VEXOIPLGlobalMeasureException() override;
};

struct GlobalMeasureModule : Module<GlobalMeasureModule> {
  static constexpr char name[] = "VEXOIPLGlobalMeasure";
  using Exception = VEXOIPLGlobalMeasureException;
};

/// getBaseLoggerName() + ".VEXOIPLGlobalMeasure"
VEXO_API const std::string& getVEXOIPLGlobalMeasureLoggerName();
VEXO_API log4cplus::Logger getVEXOIPLGlobalMeasureLogger();
/// LogMessageManager::getInstance("VEXOIPLGlobalMeasure"): the texts of the module.
VEXO_API LogMessageManager& getVEXOIPLGlobalMeasureLogMessageManager();

}  // namespace vexo::imaproc::glbmsr
