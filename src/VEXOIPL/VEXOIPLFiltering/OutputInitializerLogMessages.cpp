#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo {

using imaproc::filter::eOutputInitializerMessage;

const std::vector<std::pair<eOutputInitializerMessage, const char*>>&
MessageMap<eOutputInitializerMessage>::messages() {
  static const auto& table = *new std::vector<std::pair<eOutputInitializerMessage, const char*>>{
      {eOutputInitializerMessage::NullInput, "Input attribute should not be null"}};
  return table;
}

namespace {
const bool registered = static_cast<bool>(MsgMapRegistrator<eOutputInitializerMessage>::registerMessageMap());
}

}  // namespace vexo
