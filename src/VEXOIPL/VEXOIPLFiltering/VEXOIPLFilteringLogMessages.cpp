#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo::imaproc::filter {

MessageTable<FilteringModule, eProcessorMessage> messagesOf(eProcessorMessage) {
  static constexpr Message<eProcessorMessage> table[] = {
#define VEXO_PROCESSOR(Name, number, toolTip) {eProcessorMessage::Name, toolTip},
#include "VEXOIPL/VEXOIPLFiltering/ProcessorMessages.inc"
  };
  return table;
}

MessageTable<FilteringModule, eAttributeMessage> messagesOf(eAttributeMessage) {
  static constexpr Message<eAttributeMessage> table[] = {
      {eAttributeMessage::InDicPhaseRetrievalParams,
       "[Input] Attribute for the set of parameter used for the DIC phase retrieval algorithm"},
      {eAttributeMessage::InOutMaxVal, "[InOut] Maximum value"},
  };
  return table;
}

MessageTable<FilteringModule, eDataItemMessage> messagesOf(eDataItemMessage) {
  static constexpr Message<eDataItemMessage> table[] = {
      {eDataItemMessage::DefocusDistance, "Defocus distance"},
      {eDataItemMessage::Delta, "Related to the refractive index (which equals 1-delta)"},
      {eDataItemMessage::Energy, "Energy"},
      {eDataItemMessage::Wavelength, "Wavelength"},
      // The spelling is part of the interface.
      {eDataItemMessage::Lengthscale, "Lenghtscale (in meters), impacts other distance fields"},
      {eDataItemMessage::AbsorptionCoefficient, "Absorption coefficient"},
      {eDataItemMessage::DicPhaseRetrievalParams,
       "Set of parameter used for the DIC phase retrieval algorithm"},
      {eDataItemMessage::MaxVal, "Maximum value"},
      {eDataItemMessage::MaxValField, "Maximum value"},
  };
  return table;
}

MessageTable<FilteringModule, eOutputInitializerMessage> messagesOf(eOutputInitializerMessage) {
  static constexpr Message<eOutputInitializerMessage> table[] = {
      {eOutputInitializerMessage::NullInput, "Input attribute should not be null"},
  };
  return table;
}

MessageTable<FilteringModule, eVEXOIPLFilteringMessage> messagesOf(eVEXOIPLFilteringMessage) {
  return {};
}

namespace {
const bool registered = registerMessages<eProcessorMessage, eAttributeMessage, eDataItemMessage,
                                         eOutputInitializerMessage, eVEXOIPLFilteringMessage>();
}

}  // namespace vexo::imaproc::filter
