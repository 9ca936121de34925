#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo {

using imaproc::filter::eVEXOIPLFilteringMessage;

const std::vector<std::pair<eVEXOIPLFilteringMessage, const char*>>&
MessageMap<eVEXOIPLFilteringMessage>::messages() {
  static const auto& table = *new std::vector<std::pair<eVEXOIPLFilteringMessage, const char*>>;
  return table;
}

namespace {
const bool registered = static_cast<bool>(MsgMapRegistrator<eVEXOIPLFilteringMessage>::registerMessageMap());
}

}  // namespace vexo
