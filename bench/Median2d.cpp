#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl1.h"

#ifdef VEXO_HAS_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace vexo::bench {
namespace {

const bool added = [] {
  for (const int size : {3, 5})
    for (const auto type :
         {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
      Case line;
      line.filter = "median, " + std::to_string(size) + "x" + std::to_string(size);
      line.type = type;
      line.geometry = {4096, 4096};
      line.ours = [size](const auto& in, const auto& out) {
        if (size == 3)
          imaproc::filter::k33Median2dImg(in, out);
        else
          imaproc::filter::k55Median2dImg(in, out);
      };
#ifdef VEXO_HAS_OPENCV
      line.peer = [size](const cv::Mat& in, cv::Mat& out) { cv::medianBlur(in, out, size); };
#endif
      AddCase{line};
    }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
