#pragma once

namespace vexo::imaproc::logic {

/// What the kernel is told besides its strips.
struct MaskImgImgParameters {
  int secondType;  ///< sample type of the second input, in the order of eImageBufferType
};

}  // namespace vexo::imaproc::logic
