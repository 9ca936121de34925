#pragma once

#include <utility>
#include <vector>

#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLog.h"

namespace vexo::imaproc::logic {

/// Tool tips of processors. Values are stable: they are part of the interface.
enum class eProcessorMessage {
  MaskImgImgLvl1 = 0,
  MaskImgImgLvl2 = 1,
  MaskImgImgLvl3 = 2,
  MaskImgImg3dLvl3 = 3,
};

}  // namespace vexo::imaproc::logic

namespace vexo {

template <>
struct VEXO_API MessageMap<imaproc::logic::eProcessorMessage> {
  static LogMessageManager& manager() { return imaproc::logic::getVEXOIPLLogicalLogMessageManager(); }
  static const std::vector<std::pair<imaproc::logic::eProcessorMessage, const char*>>& messages();
};

}  // namespace vexo
