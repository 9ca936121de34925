#pragma once

// What the tests of the 2d and the 3d convolution share.

#include <cmath>
#include <functional>

#include "VEXOCore/Gpu.h"
#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"
#include "VEXOImage/CudaImage.h"
#include "VEXOMath/Kernel.h"

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

/// Index of the sample that stands for the one at i; -1 for the constant.
inline std::ptrdiff_t indexBehindBorder(image::eBorder border, std::ptrdiff_t i, std::size_t size) {
  const auto n = static_cast<std::ptrdiff_t>(size);
  if (i >= 0 && i < n) return i;
  switch (border) {
    case image::eBorder::Replicate:
      return i < 0 ? 0 : n - 1;
    case image::eBorder::Circular:
      return (i % n + n) % n;
    case image::eBorder::Constant:
      return -1;
    default:
      return static_cast<std::ptrdiff_t>(mirrored(i, size));
  }
}

/// The sum in double, and that of its terms without their signs, which bounds the error of a sum in floats.
struct DirectSum {
  double value = 0, magnitude = 0;
};
template <class Kernel>
DirectSum directSum(const Image& in, const Kernel& kernel, const image::BorderPolicy& border, std::size_t x,
                    std::size_t y, std::size_t z, std::size_t c, std::size_t t) {
  DirectSum sum;
  for (const auto& point : kernel.getPoints()) {
    const auto along = [&](std::size_t p, int d, std::size_t size) {
      return indexBehindBorder(border.getBorder(), static_cast<std::ptrdiff_t>(p) + d, size);
    };
    const auto px = along(x, point.offset.dx, in.getSizeX());
    const auto py = along(y, point.offset.dy, in.getSizeY());
    const auto pz = sliceOf(point.offset) == 0 ? static_cast<std::ptrdiff_t>(z)
                                               : along(z, sliceOf(point.offset), in.getSizeZ());
    const double value = px < 0 || py < 0 || pz < 0
                             ? border.getConstant()
                             : getSample(in, static_cast<std::size_t>(px), static_cast<std::size_t>(py),
                                         static_cast<std::size_t>(pz), c, t);
    sum.value += static_cast<double>(point.weight) * value;
    sum.magnitude += std::abs(static_cast<double>(point.weight) * value);
  }
  return sum;
}

/// Each sample is within half a step of rounding of the direct sum, and the error of single-precision sums.
template <class Kernel>
void expectConvolution(const Image& in, const Image& out, const Kernel& kernel, bool normalize,
                       const image::BorderPolicy& border = {}) {
  const bool real = out.getBufferType() == eImageBufferType::Real32;
  // Integer outputs keep the low bits: distances are taken around the circle of their values.
  const double circle = std::pow(2.0, 8.0 * static_cast<double>(getSampleSize(out.getBufferType())));
  const double norm = normalize && std::abs(kernel.getWeightSum()) > 1e-6 ? kernel.getWeightSum() : 1;
  int failures = 0;
  forEachSample(in.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    const DirectSum expected = directSum(in, kernel, border, x, y, z, c, t);
    const double count = static_cast<double>(kernel.getPoints().size()) + 3;
    const double error = count * (expected.magnitude + 1e-30) / std::abs(norm) / (1 << 23);
    double distance = std::abs(getSample(out, x, y, z, c, t) - expected.value / norm);
    if (!real) distance = std::abs(std::remainder(distance, circle)) - 0.5;
    if (!(distance <= error) && failures++ < 3)
      ADD_FAILURE() << "x " << x << " y " << y << " z " << z << ": " << getSample(out, x, y, z, c, t)
                    << " instead of " << expected.value / norm;
  });
}

/// One reference run, then: every instruction set, thread count, memory layout, and in place.
template <class Run>
void expectSameBitsHoweverItIsRun(const char* kernelClass, const ImagePtr& in, eImageBufferType type,
                                  Run run) {
  const auto fresh = [&](const ImagePtr& from) {
    const ImagePtr out = Image::create(from->getGeometry(), type);
    run(from, out);
    return out;
  };
  const ImagePtr gaps = withGaps(*in, 3);
  const ImagePtr expected = fresh(in);
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(kernelClass, sets);
    SCOPED_TRACE(core::toString(sets.getSets()));
    EXPECT_TRUE(sameBits(*fresh(in), *expected));
    EXPECT_TRUE(sameBits(*fresh(gaps), *expected)) << "gaps";
    if (getSampleSize(type) == getSampleSize(in->getBufferType())) {
      const ImagePtr same = copyOf(*in);
      const ImagePtr out = Image::wrap(same->getData(), in->getGeometry(), type, same->getStrides(), same);
      run(same, out);
      EXPECT_TRUE(sameBits(*out, *expected)) << "in place";
    }
  }
  for (const std::size_t threads : {1, 3, 7}) {
    core::ActionRunner::getInstance().setThreadCount(threads);
    EXPECT_TRUE(sameBits(*fresh(in), *expected)) << threads << " threads";
    core::ActionRunner::getInstance().setThreadCount(0);
  }
}

/// Each call throws a message that holds its words.
struct BadCall {
  std::function<void()> run;
  const char* words;
};
inline void expectRefused(const std::vector<BadCall>& calls) {
  for (const BadCall& call : calls) {
    try {
      call.run();
      ADD_FAILURE() << call.words << ": nothing was thrown";
    } catch (const BaseException& failure) {
      EXPECT_NE(failure.getMessage().find(call.words), std::string::npos) << failure.what();
    }
  }
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
