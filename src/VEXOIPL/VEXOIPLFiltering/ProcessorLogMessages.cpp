#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"

namespace vexo {

using imaproc::filter::eProcessorMessage;

const std::vector<std::pair<eProcessorMessage, const char*>>& MessageMap<eProcessorMessage>::messages() {
  static const std::vector<std::pair<eProcessorMessage, const char*>> table = {
      {eProcessorMessage::Convolution2dImgGpuLvl3,
       "Level 3 algorithm: convolution algorithm of input 2d image using a given kernel on Gpu"},
      {eProcessorMessage::Convolution2dImgLvl1,
       "Level 1 algorithm: convolution algorithm of input 2d image using a given kernel"},
      {eProcessorMessage::Convolution2dImgLvl2,
       "Level 2 algorithm: convolution algorithm of input 2d image using a given kernel"},
      {eProcessorMessage::Convolution2dImgLvl3,
       "Level 3 algorithm: convolution algorithm of input 2d image using a given kernel"},
      {eProcessorMessage::Convolution3dImgGpuLvl3,
       "Level 3 algorithm: convolution algorithm of input 3d image using a given kernel on Gpu"},
      {eProcessorMessage::Convolution3dImgLvl1,
       "Level 1 algorithm: convolution algorithm of input 3d image using a given kernel"},
      {eProcessorMessage::Convolution3dImgLvl2,
       "Level 2 algorithm: convolution algorithm of input 3d image using a given kernel"},
      {eProcessorMessage::Convolution3dImgLvl3,
       "Level 3 algorithm: convolution algorithm of input 3d image using a given kernel"},
      {eProcessorMessage::DespeckleFilter2dImgLvl1,
       "Level 1 algorithm: Filter that removes the speckles of a 2d image"},
      {eProcessorMessage::DespeckleFilter2dImgLvl2,
       "Level 2 algorithm: Filter that removes the speckles of a 2d image"},
      {eProcessorMessage::DespeckleFilter2dImgLvl3,
       "Level 3 algorithm: Filter that removes the speckles of a 2d image"},
      {eProcessorMessage::GaussianSmoothing2dImgLvl1,
       "Level 1 algorithm: Gaussian filter used to blur a 2d image"},
      {eProcessorMessage::GaussianSmoothing3dImgLvl1,
       "Level 1 algorithm: Gaussian filter used to blur a 3d image"},
      {eProcessorMessage::GenericMedian2dImgLvl1,
       "Level 1 algorithm: Median of a window of any size of a 2d image"},
      {eProcessorMessage::GenericMedian2dImgLvl2,
       "Level 2 algorithm: Median of a window of any size of a 2d image"},
      {eProcessorMessage::GenericMedian2dImgLvl3,
       "Level 3 algorithm: Median of a window of any size of a 2d image"},
      {eProcessorMessage::GenericMedian3dImgLvl1,
       "Level 1 algorithm: Median of a window of any size of a 3d image"},
      {eProcessorMessage::GenericMedian3dImgLvl2,
       "Level 2 algorithm: Median of a window of any size of a 3d image"},
      {eProcessorMessage::GenericMedian3dImgLvl3,
       "Level 3 algorithm: Median of a window of any size of a 3d image"},
      {eProcessorMessage::K33Median2dImgLvl1, "Level 1 algorithm: Median of 3x3 pixels of a 2d image"},
      {eProcessorMessage::K33Median2dImgLvl2, "Level 2 algorithm: Median of 3x3 pixels of a 2d image"},
      {eProcessorMessage::K33Median2dImgLvl3, "Level 3 algorithm: Median of 3x3 pixels of a 2d image"},
      {eProcessorMessage::K55Median2dImgLvl1, "Level 1 algorithm: Median of 5x5 pixels of a 2d image"},
      {eProcessorMessage::K55Median2dImgLvl2, "Level 2 algorithm: Median of 5x5 pixels of a 2d image"},
      {eProcessorMessage::K55Median2dImgLvl3, "Level 3 algorithm: Median of 5x5 pixels of a 2d image"},
      {eProcessorMessage::MeanSmoothing2dImgLvl1, "Level 1 algorithm: Mean filter used to blur a 2d image"},
      {eProcessorMessage::MeanSmoothing2dImgLvl2, "Level 2 algorithm: Mean filter used to blur a 2d image"},
      {eProcessorMessage::MeanSmoothing2dImgLvl3, "Level 3 algorithm: Mean filter used to blur a 2d image"},
      {eProcessorMessage::MeanSmoothing2dMaskImgLvl1,
       "Level 1 algorithm: Masked mean filter used to blur a 2d image"},
      {eProcessorMessage::MeanSmoothing2dMaskImgLvl2,
       "Level 2 algorithm: Masked mean filter used to blur a 2d image"},
      {eProcessorMessage::MeanSmoothing2dMaskImgLvl3,
       "Level 3 algorithm: Masked mean filter used to blur a 2d image"},
      {eProcessorMessage::MeanSmoothing3dImgLvl1, "Level 1 algorithm: Mean filter used to blur a 3d image"},
      {eProcessorMessage::MeanSmoothing3dMaskImgLvl1,
       "Level 1 algorithm: Masked mean filter used to blur a 3d image"},
      {eProcessorMessage::MeanSmoothing3dMaskImgLvl2,
       "Level 2 algorithm: Masked mean filter used to blur a 3d image"},
      {eProcessorMessage::MeanSmoothing3dMaskImgLvl3,
       "Level 3 algorithm: Masked mean filter used to blur a 3d image"},
      {eProcessorMessage::MeanSmoothingZ3dImgLvl2, "Level 2 algorithm: Mean filter along Z of a 3d image"},
      {eProcessorMessage::MeanSmoothingZ3dImgLvl3, "Level 3 algorithm: Mean filter along Z of a 3d image"}};
  return table;
}

namespace {
const bool registered = static_cast<bool>(MsgMapRegistrator<eProcessorMessage>::registerMessageMap());
}

}  // namespace vexo
