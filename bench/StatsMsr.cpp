#include "Bench.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"

namespace vexo::bench {
namespace {

// It writes nothing, where the memcpy that it is compared with also writes as much as it reads.
const bool added = [] {
  for (const auto type :
       {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
    Case line;
    line.filter = "statistics";
    line.type = type;
    line.geometry = {4096, 4096};
    line.ours = [](const auto& in, const auto&) { imaproc::glbmsr::statsMsr(in); };
    AddCase{line};
  }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
