#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianSmoothing2dImgLvl1.h"

#include "Bench.h"

#ifdef VEXO_HAS_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace vexo::bench {
namespace {

const bool added = [] {
  for (const int sigma : {1, 3, 10})
    for (const auto type :
         {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
      Case line;
      line.filter = "Gaussian, sigma " + std::to_string(sigma);
      line.type = type;
      line.geometry = {4096, 4096};
      line.ours = [sigma](const auto& in, const auto& out) {
        const auto stdDev = static_cast<float>(sigma);
        imaproc::filter::gaussianSmoothing2dImg(
            in, stdDev, stdDev, imaproc::attr::InOptSmoothingGaussianCoverage::defaultValue(), out);
      };
#ifdef VEXO_HAS_OPENCV
      // The default coverage reaches as far: 2.97 deviations, rounded up.
      const int size = 2 * 3 * sigma + 1;
      line.peer = [size, sigma](const cv::Mat& in, cv::Mat& out) {
        cv::GaussianBlur(in, out, {size, size}, sigma, sigma, cv::BORDER_REFLECT);
      };
#endif
      AddCase{line};
    }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
