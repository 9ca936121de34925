#include "VEXOIPL/VEXOIPLGlobalMeasure/VEXOIPLGlobalMeasureLogMessages.h"

namespace vexo {

using imaproc::glbmsr::eProcessorMessage;

const std::vector<std::pair<eProcessorMessage, const char*>>& MessageMap<eProcessorMessage>::messages() {
  static const auto& table = *new std::vector<std::pair<eProcessorMessage, const char*>>{
      {eProcessorMessage::StatsMsrLvl1, "Level 1 algorithm: Statistics of all samples of an image"},
      {eProcessorMessage::StatsMsr2dLvl2, "Level 2 algorithm: Statistics of the samples of a 2d image"},
      {eProcessorMessage::StatsMsr3dLvl2, "Level 2 algorithm: Statistics of the samples of a 3d image"},
      {eProcessorMessage::StatsMsr2dLvl3, "Level 3 algorithm: Statistics of the samples of a 2d image"},
      {eProcessorMessage::StatsMsr3dLvl3, "Level 3 algorithm: Statistics of the samples of a 3d image"}};
  return table;
}

namespace {
const bool registered = static_cast<bool>(MsgMapRegistrator<eProcessorMessage>::registerMessageMap());
}

}  // namespace vexo
