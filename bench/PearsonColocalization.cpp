// The peer, NumPy, is timed by scipy_peers.py.
#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl1.h"

namespace vexo::bench {
namespace {

const bool added = [] {
  for (const auto type :
       {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
    Case line;
    line.filter = "Pearson map";
    line.type = type;
    line.outType = image::eImageBufferType::Real32;
    line.geometry = {4096, 4096};
    const auto second = boost::make_shared<boost::shared_ptr<image::Image>>();
    line.ours = [second](const auto& in, const auto& out) {
      if (!*second) {
        *second = image::Image::create(in->getGeometry(), in->getBufferType());
        image::copySamples(image::hostImage(in, "in"), **second);
      }
      imaproc::filter::pearsonColocalization2dImg(in, *second, out);
    };
    AddCase{line};
  }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
