#include "VEXOIPL/VEXOIPLLogical/VEXOIPLLogicalLogMessages.h"

namespace vexo {

using imaproc::logic::eProcessorMessage;

const std::vector<std::pair<eProcessorMessage, const char*>>& MessageMap<eProcessorMessage>::messages() {
  static const auto& table = *new std::vector<std::pair<eProcessorMessage, const char*>>{
      {eProcessorMessage::MaskImgImgLvl1, "Level 1 algorithm: Choice between two images by a mask"},
      {eProcessorMessage::MaskImgImgLvl2, "Level 2 algorithm: Choice between two images by a mask"},
      {eProcessorMessage::MaskImgImgLvl3, "Level 3 algorithm: Choice between two images by a mask"},
      {eProcessorMessage::MaskImgImg3dLvl3, "Level 3 algorithm: Choice between two volumes by a mask"}};
  return table;
}

namespace {
const bool registered = static_cast<bool>(MsgMapRegistrator<eProcessorMessage>::registerMessageMap());
}

}  // namespace vexo
