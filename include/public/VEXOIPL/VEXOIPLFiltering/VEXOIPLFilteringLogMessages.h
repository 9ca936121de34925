#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLog.h"

namespace vexo::imaproc::filter {

/// Tool tips of processors.
enum class eProcessorMessage {
#define VEXO_PROCESSOR(Name, number, toolTip) Name = number,
#include "VEXOIPL/VEXOIPLFiltering/ProcessorMessages.inc"
};

/// Tool tips of the module's own attributes.
enum class eAttributeMessage { InDicPhaseRetrievalParams = 0, InOutMaxVal = 1 };

/// Tool tips of the module's own data items and their fields.
enum class eDataItemMessage {
  DefocusDistance = 0,
  Delta = 1,
  Energy = 2,
  Wavelength = 3,
  Lengthscale = 4,
  AbsorptionCoefficient = 5,
  DicPhaseRetrievalParams = 6,
  MaxVal = 7,
  MaxValField = 8,
};

enum class eOutputInitializerMessage { NullInput = 0 };

/// Errors of the module as a whole: none so far.
enum class eVEXOIPLFilteringMessage {};

VEXO_API MessageTable<FilteringModule, eProcessorMessage> messagesOf(eProcessorMessage);
VEXO_API MessageTable<FilteringModule, eAttributeMessage> messagesOf(eAttributeMessage);
VEXO_API MessageTable<FilteringModule, eDataItemMessage> messagesOf(eDataItemMessage);
VEXO_API MessageTable<FilteringModule, eOutputInitializerMessage> messagesOf(eOutputInitializerMessage);
VEXO_API MessageTable<FilteringModule, eVEXOIPLFilteringMessage> messagesOf(eVEXOIPLFilteringMessage);

}  // namespace vexo::imaproc::filter
