#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo {

using imaproc::filter::eAttributeMessage;

const std::vector<std::pair<eAttributeMessage, const char*>>& MessageMap<eAttributeMessage>::messages() {
  static const auto& table = *new std::vector<std::pair<eAttributeMessage, const char*>>{
      {eAttributeMessage::InDicPhaseRetrievalParams,
       "[Input] Attribute for the set of parameter used for the DIC phase retrieval algorithm"},
      {eAttributeMessage::InOutMaxVal, "[InOut] Maximum value"}};
  return table;
}

namespace {
const bool registered = static_cast<bool>(MsgMapRegistrator<eAttributeMessage>::registerMessageMap());
}

}  // namespace vexo
