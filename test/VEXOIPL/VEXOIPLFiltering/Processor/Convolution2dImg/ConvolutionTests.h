#pragma once

// What the tests of the 2d and the 3d convolution share.

#include "VEXOCore/Gpu.h"
#include "VEXOImage/CudaImage.h"
#include "VEXOMath/Kernel.h"
#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::test {

inline int sliceOf(const OffsetXY&) {
  return 0;
}
inline int sliceOf(const OffsetXYZ& offset) {
  return offset.dz;
}
inline void insertPoint(KernelXY& kernel, int dx, int dy, int, float weight) {
  kernel.insert({dx, dy}, weight);
}
inline void insertPoint(KernelXYZ& kernel, int dx, int dy, int dz, float weight) {
  kernel.insert({dx, dy, dz}, weight);
}

/// A kernel with a random weight in [-1, 1[ + 0.2 at each offset in the box.
template <class Kernel>
boost::shared_ptr<Kernel> boxKernel(int x0, int x1, int y0, int y1, int z0 = 0, int z1 = 0) {
  const auto kernel = boost::make_shared<Kernel>();
  std::mt19937 random(7);
  std::uniform_real_distribution<float> weight(-0.8f, 1.2f);
  for (int z = z0; z <= z1; ++z)
    for (int y = y0; y <= y1; ++y)
      for (int x = x0; x <= x1; ++x) insertPoint(*kernel, x, y, z, weight(random));
  return kernel;
}

/// Each sample is within half a step of rounding of the sum in double, and the error of single-precision
/// sums, which the sum of the terms without their signs bounds.
template <class Kernel>
void expectConvolution(const Image& in, const Image& out, const Kernel& kernel, bool normalize,
                       const image::BorderPolicy& border = {}) {
  const double norm = normalize && std::abs(kernel.getWeightSum()) > 1e-6 ? kernel.getWeightSum() : 1;
  const double count = static_cast<double>(kernel.getPoints().size()) + 3;
  int failures = 0;
  forEachSample(in.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    double sum = 0, magnitude = 0;
    for (const auto& point : kernel.getPoints()) {
      const auto at = [](std::size_t p, int d) { return static_cast<std::ptrdiff_t>(p) + d; };
      const double term = static_cast<double>(point.weight) *
                          getBorderSample(in, border, at(x, point.offset.dx), at(y, point.offset.dy),
                                          at(z, sliceOf(point.offset)), c, t);
      sum += term;
      magnitude += std::abs(term);
    }
    const double found = getSample(out, x, y, z, c, t), expected = sum / norm;
    const double error = count * (magnitude + 1e-30) / std::abs(norm) / (1 << 23);
    if (!(distanceOnCircle(found, expected, out.getBufferType()) <= error) && failures++ < 3)
      ADD_FAILURE() << "x " << x << " y " << y << " z " << z << ": " << found << " instead of " << expected;
  });
}

/// One run, then: every instruction set, apart and in place, and several threads.
template <class Run>
void expectSameBitsHoweverItIsRun(const ImagePtr& in, const Run& run) {
  const auto check = [&](const Image& expected) {
    const ImagePtr out = Image::create(in->getGeometry(), in->getBufferType()), same = copyOf(*in);
    run(in, out);
    run(same, same);
    EXPECT_TRUE(sameBits(*out, expected));
    EXPECT_TRUE(sameBits(*same, expected)) << "in place";
  };
  const ImagePtr expected = Image::create(in->getGeometry(), in->getBufferType());
  run(in, expected);
  for (const auto& sets : offeredSets()) {
    SCOPED_TRACE(core::toString(sets.getSets()));
    const ForcedSets forced(sets);
    check(*expected);
  }
  core::ActionRunner::getInstance().setThreadCount(3);
  check(*expected);
  core::ActionRunner::getInstance().setThreadCount(0);
}

/// The result on the GPU, for a call of the form run(in, out).
template <class Run>
ImagePtr runOnGpu(const Image& in, eImageBufferType type, bool inPlace, Run run) {
  const auto source = image::CudaImage::fromHost(in);
  const auto out = inPlace ? source : image::CudaImage::create(in.getGeometry(), type);
  run(source, out);
  return out->toHost();
}

}  // namespace vexo::test
