// Gaussian smoothing and convolution of volumes; the peer is timed by scipy_peers.py.
#include "Bench.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing3dImg/GaussianSmoothing3dImgLvl1.h"

namespace vexo::bench {
namespace {

boost::shared_ptr<const KernelXYZ> denseKernel() {
  const auto kernel = boost::make_shared<KernelXYZ>();
  float weight = 0;
  for (int dz = -1; dz <= 1; ++dz)
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) kernel->insert({dx, dy, dz}, ++weight);
  return kernel;
}

const bool added = [] {
  const auto coverage = boost::make_shared<const imaproc::attr::GaussianCoverage>();
  const auto kernel = denseKernel();
  for (const auto type :
       {image::eImageBufferType::UInt8, image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
    for (const float sigma : {1.f, 3.f}) {
      Case line;
      line.filter = "Gaussian 3d, sigma " + std::to_string(static_cast<int>(sigma));
      line.type = type;
      line.geometry = {256, 256, 256};
      line.ours = [=](const auto& in, const auto& out) {
        imaproc::filter::gaussianSmoothing3dImg(in, sigma, sigma, sigma, coverage, out);
      };
      AddCase{line};
    }
    Case line;
    line.filter = "convolution 3d, 3x3x3";
    line.type = type;
    line.geometry = {256, 256, 256};
    line.ours = [=](const auto& in, const auto& out) {
      imaproc::filter::convolution3dImg(in, kernel, true, out);
    };
    AddCase{line};
  }
  return true;
}();

}  // namespace
}  // namespace vexo::bench
