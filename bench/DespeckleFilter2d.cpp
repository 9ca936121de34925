#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"

namespace vexo::bench {
namespace {

const bool added = [] {
  for (const auto type :
       {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
    Case line;
    line.filter = "mean, half 2";
    line.type = type;
    line.geometry = {4096, 4096};
    line.ours = [](const auto& in, const auto& out) { imaproc::filter::meanSmoothing2dImg(in, 2, 2, out); };
    AddCase{line};
    line.yardstick = {"mean, half 2", type};
    line.filter = "despeckle, half 2, factor 3";
    line.ours = [](const auto& in, const auto& out) {
      imaproc::filter::despeckleFilter2dImg(in, 2, 2, 3, out);
    };
    AddCase{line};
  }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
