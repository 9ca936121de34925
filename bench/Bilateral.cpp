// The bilateral filters. Our window is the full square, the peer's a disc: 25 and 13 places for half 2, 121
// and 81 for half 5; bench/README.md gives the ratios per place too.
#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/Bilateral2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateral2dImgLvl1.h"

#ifdef VEXO_HAS_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace vexo::bench {
namespace {

using image::eImageBufferType;

/// About an eighth of the range of the samples.
double rangeSigma(eImageBufferType type) {
  return type == eImageBufferType::UInt8 ? 30 : 30 * 257;
}

void addPlane(std::uint32_t half, eImageBufferType type) {
  const double space = half / 1.5, range = rangeSigma(type);
  Case line;
  line.filter = "bilateral, half " + std::to_string(half);
  line.type = type;
  line.geometry = {2048, 2048};
  line.ours = [=](const auto& in, const auto& out) {
    imaproc::filter::bilateral2dImg(in, half, space, range, out);
  };
  if (type == eImageBufferType::UInt16) line.yardstick = {line.filter, eImageBufferType::UInt8};
#ifdef VEXO_HAS_OPENCV
  if (type != eImageBufferType::UInt16)
    line.peer = [=](const cv::Mat& in, cv::Mat& out) {
      cv::bilateralFilter(in, out, 2 * static_cast<int>(half) + 1, range, space);
    };
#endif
  AddCase{line};
  if (type != eImageBufferType::UInt16) return;
  // Cameras give 12 bits as a rule: their table fits the first-level cache.
  line.filter += ", 12 bits";
  line.largest = 4095;
  line.ours = [=](const auto& in, const auto& out) {
    imaproc::filter::bilateral2dImg(in, half, space, range / 16, out);
  };
  AddCase{line};
}

void addSeparated(eImageBufferType type) {
  Case line;
  line.filter = "separated bilateral, half 5";
  line.type = type;
  line.geometry = {2048, 2048};
  line.yardstick = {"bilateral, half 5", type};
  line.ours = [=](const auto& in, const auto& out) {
    imaproc::filter::separatedBilateral2dImg(in, 5, 5 / 1.5, rangeSigma(type), out);
  };
  AddCase{line};
}

void addVolume(eImageBufferType type) {
  Case line;
  line.filter = "bilateral 3d, half 2";
  line.type = type;
  line.geometry = {128, 128, 128};
  line.yardstick = {"bilateral, half 2", type, 5};  // 125 places instead of 25
  line.ours = [=](const auto& in, const auto& out) {
    imaproc::filter::bilateral3dImg(in, 2, 2 / 1.5, rangeSigma(type), out);
  };
  AddCase{line};
}

const bool added = [] {
  for (const auto type : {eImageBufferType::UInt8, eImageBufferType::UInt16, eImageBufferType::Real32}) {
    addPlane(2, type);
    addPlane(5, type);
    addSeparated(type);
    addVolume(type);
  }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
