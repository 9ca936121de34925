#pragma once

#include <utility>
#include <vector>

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLog.h"

namespace vexo::imaproc::filter {

/// Tool tips of processors. Values are stable: they are part of the interface.
enum class eProcessorMessage {
  Bilateral2dImgLvl1 = 9,
  Bilateral2dImgLvl2 = 10,
  Bilateral2dImgLvl3 = 11,
  Bilateral3dImgLvl1 = 12,
  Bilateral3dImgLvl2 = 13,
  Bilateral3dImgLvl3 = 14,
  Convolution2dImgGpuLvl3 = 19,
  Convolution2dImgLvl1 = 20,
  Convolution2dImgLvl2 = 21,
  Convolution2dImgLvl3 = 22,
  Convolution3dImgGpuLvl3 = 23,
  Convolution3dImgLvl1 = 24,
  Convolution3dImgLvl2 = 25,
  Convolution3dImgLvl3 = 26,
  DespeckleFilter2dImgLvl1 = 36,
  DespeckleFilter2dImgLvl2 = 37,
  DespeckleFilter2dImgLvl3 = 38,
  GaussianSmoothing2dImgLvl1 = 70,
  GaussianSmoothing3dImgLvl1 = 71,
  GenericMedian2dImgLvl1 = 72,
  GenericMedian2dImgLvl2 = 73,
  GenericMedian2dImgLvl3 = 74,
  GenericMedian3dImgLvl1 = 75,
  GenericMedian3dImgLvl2 = 76,
  GenericMedian3dImgLvl3 = 77,
  HistoMedian3dImgLvl1 = 78,
  HistoMedian3dImgLvl2 = 79,
  HistoMedian3dImgLvl3 = 80,
  HistoO1Median2dImgLvl1 = 81,
  HistoO1Median2dImgLvl2 = 82,
  HistoO1Median2dImgLvl3 = 83,
  HistoO1MedianXStrip2dImgLvl1 = 84,
  HistoO1MedianXStrip2dImgLvl2 = 85,
  HistoO1MedianXStrip2dImgLvl3 = 86,
  HistoOkMedian2dImgLvl1 = 87,
  HistoOkMedian2dImgLvl2 = 88,
  HistoOkMedian2dImgLvl3 = 89,
  K33Median2dImgLvl1 = 92,
  K33Median2dImgLvl2 = 93,
  K33Median2dImgLvl3 = 94,
  K55Median2dImgLvl1 = 95,
  K55Median2dImgLvl2 = 96,
  K55Median2dImgLvl3 = 97,
  MeanSmoothing2dImgLvl1 = 105,
  MeanSmoothing2dImgLvl2 = 106,
  MeanSmoothing2dImgLvl3 = 107,
  MeanSmoothing2dMaskImgLvl1 = 109,
  MeanSmoothing2dMaskImgLvl2 = 110,
  MeanSmoothing2dMaskImgLvl3 = 111,
  MeanSmoothing3dImgLvl1 = 112,
  MeanSmoothing3dMaskImgLvl1 = 114,
  MeanSmoothing3dMaskImgLvl2 = 115,
  MeanSmoothing3dMaskImgLvl3 = 116,
  MeanSmoothingZ3dImgLvl2 = 117,
  MeanSmoothingZ3dImgLvl3 = 118,
  Median2dImgLvl1 = 120,
  Median3dImgLvl1 = 121,
  PearsonColocalization2dImgLvl1 = 122,
  PearsonColocalization2dImgLvl2 = 123,
  PearsonColocalization2dImgLvl3 = 124,
  PearsonColocalization3dImgLvl1 = 125,
  PearsonColocalization3dImgLvl2 = 126,
  PearsonColocalization3dImgLvl3 = 127,
  SeparatedBilateral2dImgLvl1 = 130,
  SeparatedBilateral2dImgLvl2 = 131,
  SeparatedBilateralX2dImgLvl3 = 132,
  SeparatedBilateralY2dImgLvl3 = 133,
  SeparatedBilateral3dImgLvl1 = 134,
  SeparatedBilateral3dImgLvl2 = 135,
  SeparatedBilateralX3dImgLvl3 = 136,
  SeparatedBilateralY3dImgLvl3 = 137,
  SeparatedBilateralZ3dImgLvl3 = 138,
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

/// What the tables below have in common.
struct VEXO_API FilteringMessages {
  static LogMessageManager& manager() { return getVEXOIPLFilteringLogMessageManager(); }
};

}  // namespace vexo::imaproc::filter

namespace vexo {

template <>
struct VEXO_API MessageMap<imaproc::filter::eProcessorMessage> : imaproc::filter::FilteringMessages {
  static const std::vector<std::pair<imaproc::filter::eProcessorMessage, const char*>>& messages();
};
template <>
struct VEXO_API MessageMap<imaproc::filter::eAttributeMessage> : imaproc::filter::FilteringMessages {
  static const std::vector<std::pair<imaproc::filter::eAttributeMessage, const char*>>& messages();
};
template <>
struct VEXO_API MessageMap<imaproc::filter::eDataItemMessage> : imaproc::filter::FilteringMessages {
  static const std::vector<std::pair<imaproc::filter::eDataItemMessage, const char*>>& messages();
};
template <>
struct VEXO_API MessageMap<imaproc::filter::eOutputInitializerMessage> : imaproc::filter::FilteringMessages {
  static const std::vector<std::pair<imaproc::filter::eOutputInitializerMessage, const char*>>& messages();
};
template <>
struct VEXO_API MessageMap<imaproc::filter::eVEXOIPLFilteringMessage> : imaproc::filter::FilteringMessages {
  static const std::vector<std::pair<imaproc::filter::eVEXOIPLFilteringMessage, const char*>>& messages();
};

}  // namespace vexo
