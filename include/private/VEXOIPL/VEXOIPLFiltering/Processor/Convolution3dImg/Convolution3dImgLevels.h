#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Convolution/ConvolutionLevels.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {

class Convolution2dImgLvl3;

/// Level 3, one band of slices: the kernel of planes, whose points may lie in other slices.
class VEXO_API Convolution3dImgLvl3 final
    : public ConvolutionLvl3<Convolution3dImgLvl3, attr::InKnlZStrip3d, attr::InKnlXYZ,
                             attr::InConvolBorder3d, attr::OutZStrip3d, Convolution2dImgLvl3> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Convolution3dImgLvl3;

  /// Slices are large: fewer of them make a strip, so that a volume is enough for several threads.
  static processor::ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {16, 4}; }
};

/// Level 3, one volume on the GPU.
class VEXO_API Convolution3dImgGpuLvl3 final
    : public ConvolutionGpuLvl3<Convolution3dImgGpuLvl3, attr::InKnlXYZ, attr::InConvolBorder3d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Convolution3dImgGpuLvl3;
};

/// Level 2, one volume: sends it to the GPU when it lies there; else cuts it into bands with the margins of
/// the kernel, for level 3. A kernel along Z is run on bands of rows of all slices, which need no margins
/// from each other; others on bands of slices. Input and output may be the same image.
class VEXO_API Convolution3dImgLvl2 final
    : public ConvolutionLvl2<Convolution3dImgLvl2, Convolution3dImgLvl3, Convolution3dImgGpuLvl3,
                             attr::InSubImg3d, attr::InKnlXYZ, attr::InConvolBorder3d> {
public:
  static constexpr auto toolTipId = eProcessorMessage::Convolution3dImgLvl2;
};

}  // namespace vexo::imaproc::filter
