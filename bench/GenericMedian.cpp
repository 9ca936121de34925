// Medians of windows of any size; the peer of the volumes is timed by volumes.py.
#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl1.h"

namespace vexo::bench {
namespace {

const bool added = [] {
  for (const auto type :
       {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
    Case plane;
    plane.filter = "generic median, half 3";
    plane.type = type;
    plane.geometry = {1024, 1024};
    plane.ours = [](const auto& in, const auto& out) { imaproc::filter::genericMedian2dImg(in, 3, 3, out); };
    AddCase{plane};
    Case volume;
    volume.filter = "generic median 3d, half 1";
    volume.type = type;
    volume.geometry = {256, 256, 256};
    volume.ours = [](const auto& in, const auto& out) {
      imaproc::filter::genericMedian3dImg(in, 1, 1, 1, out);
    };
    AddCase{volume};
  }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
