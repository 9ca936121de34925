#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo {

using imaproc::filter::eDataItemMessage;

const std::vector<std::pair<eDataItemMessage, const char*>>& MessageMap<eDataItemMessage>::messages() {
  static const auto& table = *new std::vector<std::pair<eDataItemMessage, const char*>>{
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
      {eDataItemMessage::MaxValField, "Maximum value"}};
  return table;
}

namespace {
const bool registered = static_cast<bool>(MsgMapRegistrator<eDataItemMessage>::registerMessageMap());
}

}  // namespace vexo
