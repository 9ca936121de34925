#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl1.h"

#ifdef VEXO_HAS_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace vexo::bench {
namespace {

/// A kernel of different weights around the centre, and the same for the peer.
void add(const std::string& name, int sizeX, int sizeY, bool alsoToFloat) {
  const auto kernel = boost::make_shared<KernelXY>();
  std::vector<float> weights;
  for (int y = 0; y < sizeY; ++y)
    for (int x = 0; x < sizeX; ++x) {
      weights.push_back(1.0f / static_cast<float>(sizeX * sizeY + (3 * x + 5 * y) % 7));
      kernel->insert({x - sizeX / 2, y - sizeY / 2}, weights.back());
    }
  for (const auto type :
       {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
    Case line;
    line.filter = "convolution, " + name;
    line.type = type;
    line.geometry = {4096, 4096};
    line.ours = [kernel](const auto& in, const auto& out) {
      imaproc::filter::convolution2dImg(in, kernel, true, out);
    };
#ifdef VEXO_HAS_OPENCV
    line.peer = [weights, sizeX, sizeY](const cv::Mat& in, cv::Mat& out) {
      const cv::Mat matrix(sizeY, sizeX, CV_32F, const_cast<float*>(weights.data()));
      cv::filter2D(in, out, out.depth(), matrix, {-1, -1}, 0, cv::BORDER_REFLECT);
    };
#endif
    AddCase{line};
    if (!alsoToFloat || type == image::eImageBufferType::Real32) continue;
    line.outType = image::eImageBufferType::Real32;
    AddCase{line};
  }
}

const bool added = [] {
  for (const int size : {3, 7, 15}) add(std::to_string(size) + "x" + std::to_string(size), size, size, true);
  add("19 along x", 19, 1, false);
  add("19 along y", 1, 19, false);
  return true;
}();

}  // namespace
}  // namespace vexo::bench
