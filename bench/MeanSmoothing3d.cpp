#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothing3dImgLvl1.h"

namespace vexo::bench {
namespace {

const bool added = [] {
  for (const std::uint32_t half : {1u, 5u})
    for (const auto type :
         {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
      Case line;
      line.filter = "mean 3d, half " + std::to_string(half);
      line.type = type;
      line.geometry = {256, 256, 256};
      line.ours = [half](const auto& in, const auto& out) {
        imaproc::filter::meanSmoothing3dImg(in, half, half, half, out);
      };
      AddCase{line};
    }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
