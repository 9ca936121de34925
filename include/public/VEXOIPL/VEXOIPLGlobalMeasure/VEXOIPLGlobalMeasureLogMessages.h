#pragma once

#include <utility>
#include <vector>

#include "VEXOIPL/VEXOIPLGlobalMeasure/VEXOIPLGlobalMeasureLog.h"

namespace vexo::imaproc::glbmsr {

/// Tool tips of processors. Values are stable: they are part of the interface.
enum class eProcessorMessage {
  StatsMsrLvl1 = 0,
  StatsMsr2dLvl2 = 1,
  StatsMsr3dLvl2 = 2,
  StatsMsr2dLvl3 = 3,
  StatsMsr3dLvl3 = 4,
};

}  // namespace vexo::imaproc::glbmsr

namespace vexo {

template <>
struct VEXO_API MessageMap<imaproc::glbmsr::eProcessorMessage> {
  static LogMessageManager& manager() { return imaproc::glbmsr::getVEXOIPLGlobalMeasureLogMessageManager(); }
  static const std::vector<std::pair<imaproc::glbmsr::eProcessorMessage, const char*>>& messages();
};

}  // namespace vexo
