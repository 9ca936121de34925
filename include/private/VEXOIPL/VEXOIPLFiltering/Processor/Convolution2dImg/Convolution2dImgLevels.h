#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionLevels.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

/// Level 3, one band of rows.
class VEXO_API Convolution2dImgLvl3 final
    : public ConvolutionLvl3<Convolution2dImgLvl3, attr::InKnlYStrip2d, attr::InKnlXY, attr::InConvolBorder2d,
                             attr::OutYStrip2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Convolution2dImgLvl3;
};

/// Level 3, one plane on the GPU.
class VEXO_API Convolution2dImgGpuLvl3 final
    : public ConvolutionGpuLvl3<Convolution2dImgGpuLvl3, attr::InKnlXY, attr::InConvolBorder2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Convolution2dImgGpuLvl3;
};

/// Level 2, one plane: sends it to the GPU when it lies there; else cuts it into bands of rows with the
/// margins of the kernel, for level 3. Input and output may be the same image.
class VEXO_API Convolution2dImgLvl2 final
    : public ConvolutionLvl2<Convolution2dImgLvl2, Convolution2dImgLvl3, Convolution2dImgGpuLvl3,
                             attr::InSubImg2d, attr::InKnlXY, attr::InConvolBorder2d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Convolution2dImgLvl2;
};

}  // namespace vexo::imaproc::filter
