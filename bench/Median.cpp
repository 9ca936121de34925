// Medians of windows of any size, as the selection chooses them, and by the classes themselves.
#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/HistoOkMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Median2dImg/Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Median3dImg/Median3dImgLvl1.h"

#ifdef VEXO_HAS_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace vexo::bench {
namespace {

using image::eImageBufferType;

// Of 16 bits: with a range that has a level for each value, and with the whole range in 256 levels.
void addPlanes(std::uint32_t half) {
  Case line;
  line.filter = "median, half " + std::to_string(half);
  line.type = eImageBufferType::UInt8;
  line.geometry = {4096, 4096};
  line.ours = [=](const auto& in, const auto& out) { imaproc::filter::median2dImg(in, half, half, out); };
  Case narrow = line, compressed = line;
#ifdef VEXO_HAS_OPENCV
  line.peer = [=](const cv::Mat& in, cv::Mat& out) {
    cv::medianBlur(in, out, 2 * static_cast<int>(half) + 1);
  };
#endif
  AddCase{line};
  narrow.type = compressed.type = eImageBufferType::UInt16;
  narrow.yardstick = compressed.yardstick = {line.filter, line.type};
  narrow.filter += ", range 255";
  narrow.largest = 255;
  AddCase{narrow};
  compressed.filter += ", compressed";
  compressed.ours = [=](const auto& in, const auto& out) {
    imaproc::filter::median2dImg_allow8bitsCompression(in, half, half, out);
  };
  AddCase{compressed};
}

void addGeneric(eImageBufferType type) {
  Case line;
  line.filter = "generic median, half 3";
  line.type = type;
  line.geometry = {1024, 1024};
  line.ours = [](const auto& in, const auto& out) { imaproc::filter::genericMedian2dImg(in, 3, 3, out); };
  AddCase{line};
}

void addSwept() {
  Case line;
  line.filter = "swept median, half 3";
  line.type = eImageBufferType::UInt8;
  line.geometry = {4096, 4096};
  line.yardstick = {"median, half 3", line.type};
  line.ours = [](const auto& in, const auto& out) {
    imaproc::filter::histoOkMedian2dImg(in, 3, 3, boost::make_shared<imaproc::attr::Range>(0, 255), out);
  };
  AddCase{line};
}

void addVolume(std::uint32_t half, eImageBufferType type) {
  Case line;
  line.filter = "median 3d, half " + std::to_string(half);
  line.type = type;
  line.geometry = {256, 256, 256};
  line.ours = [=](const auto& in, const auto& out) {
    imaproc::filter::median3dImg(in, half, half, half, out);
  };
  AddCase{line};
}

const bool added = [] {
  for (const std::uint32_t half : {3u, 7u, 15u, 25u, 50u}) addPlanes(half);
  for (const auto type : {eImageBufferType::UInt8, eImageBufferType::UInt16, eImageBufferType::Real32}) {
    addGeneric(type);
    addVolume(1, type);
  }
  addSwept();
  addVolume(3, eImageBufferType::UInt8);
  return true;
}();

}  // namespace
}  // namespace vexo::bench
