#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"

#ifdef VEXO_HAS_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace vexo::bench {
namespace {

const bool added = [] {
  for (const std::uint32_t half : {1u, 5u, 25u})
    for (const auto type :
         {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
      Case line;
      line.filter = "mean, half " + std::to_string(half);
      line.type = type;
      line.geometry = {4096, 4096};
      line.ours = [half](const auto& in, const auto& out) {
        imaproc::filter::meanSmoothing2dImg(in, half, half, out);
      };
#ifdef VEXO_HAS_OPENCV
      const int size = 2 * static_cast<int>(half) + 1;
      line.peer = [size](const cv::Mat& in, cv::Mat& out) {
        cv::blur(in, out, {size, size}, {-1, -1}, cv::BORDER_REFLECT);
      };
#endif
      AddCase{line};
    }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
