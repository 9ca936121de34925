#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl1.h"
#include "VEXOImage/Image.h"

namespace vexo::bench {
namespace {

/// A mask of discs of 64 pixels, so that rows hold runs of both kinds. Made when it is first needed.
image::ConstImagePtr discs(const image::ImageGeometry& geometry) {
  const auto mask = image::Image::create(geometry, image::eImageBufferType::UInt8);
  for (std::size_t z = 0; z < geometry.z; ++z)
    for (std::size_t y = 0; y < geometry.y; ++y)
      for (std::size_t x = 0; x < geometry.x; ++x) {
        const int dx = static_cast<int>(x % 64) - 32, dy = static_cast<int>(y % 64) - 32;
        mask->getRow<std::uint8_t>(y, z)[x] = dx * dx + dy * dy < 28 * 28 ? 255 : 0;
      }
  return mask;
}

// The plain mean is what to compare with: its lines stand in the same table.
const bool added = [] {
  for (const auto type :
       {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
    Case line;
    line.filter = "masked mean, half 5";
    line.type = type;
    line.geometry = {4096, 4096};
    line.ours = [](const auto& in, const auto& out) {
      static const auto mask = discs({4096, 4096});
      imaproc::filter::meanSmoothing2dMaskImg(in, mask, 5, 5, out);
    };
    AddCase{line};
    line.filter = "masked mean 3d, half 5";
    line.geometry = {256, 256, 256};
    line.ours = [](const auto& in, const auto& out) {
      static const auto mask = discs({256, 256, 256});
      imaproc::filter::meanSmoothing3dMaskImg(in, mask, 5, 5, 5, out);
    };
    AddCase{line};
  }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
