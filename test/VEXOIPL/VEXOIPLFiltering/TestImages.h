#pragma once

// Images and runs that the filter tests share.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "VEXOCore/Action.h"
#include "VEXOImage/Image.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::test {

using image::eImageBufferType;
using image::Image;
using image::ImageGeometry;
using ImagePtr = boost::shared_ptr<Image>;

inline const std::vector<eImageBufferType>& allTypes() {
  static const std::vector<eImageBufferType> types = {
      eImageBufferType::UInt8,  eImageBufferType::Int8,  eImageBufferType::UInt16, eImageBufferType::Int16,
      eImageBufferType::UInt32, eImageBufferType::Int32, eImageBufferType::Real32};
  return types;
}

inline double getSample(const Image& image, std::size_t x, std::size_t y, std::size_t z = 0,
                        std::size_t c = 0, std::size_t t = 0) {
  return image::visitBufferType(image.getBufferType(), [&](auto zero) {
    return static_cast<double>(image.getRow<decltype(zero)>(y, z, c, t)[x]);
  });
}

inline void setSample(Image& image, double value, std::size_t x, std::size_t y, std::size_t z = 0,
                      std::size_t c = 0, std::size_t t = 0) {
  image::visitBufferType(image.getBufferType(), [&](auto zero) {
    using T = decltype(zero);
    image.getRow<T>(y, z, c, t)[x] = static_cast<T>(value);
  });
}

template <class Function>
void forEachSample(const ImageGeometry& g, Function function) {
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < g.z; ++z)
        for (std::size_t y = 0; y < g.y; ++y)
          for (std::size_t x = 0; x < g.x; ++x) function(x, y, z, c, t);
}

/// Random samples: whole numbers within +-3000 and the type; floats within +-3000.
inline ImagePtr randomImage(const ImageGeometry& geometry, eImageBufferType type, unsigned seed = 1) {
  const ImagePtr result = Image::create(geometry, type);
  std::mt19937 random(seed);
  image::visitBufferType(type, [&](auto zero) {
    using T = decltype(zero);
    const double low = std::max(-3000.0, static_cast<double>(std::numeric_limits<T>::lowest()));
    const double high = std::min(3000.0, static_cast<double>(std::numeric_limits<T>::max()));
    std::uniform_real_distribution<double> value(low, high);
    forEachSample(geometry, [&](auto x, auto y, auto z, auto c, auto t) {
      setSample(*result, static_cast<double>(static_cast<T>(value(random))), x, y, z, c, t);
    });
  });
  return result;
}

/// A copy inside memory with gaps between rows and slices, its first sample `offset` samples after an aligned
/// address.
inline ImagePtr withGaps(const Image& image, std::size_t offset) {
  const ImageGeometry& g = image.getGeometry();
  const auto sample = static_cast<std::ptrdiff_t>(getSampleSize(image.getBufferType()));
  image::ImageStrides s;
  s.y = (static_cast<std::ptrdiff_t>(g.x) + 5) * sample;
  s.z = s.y * static_cast<std::ptrdiff_t>(g.y) + 3 * sample;
  s.c = s.z * static_cast<std::ptrdiff_t>(g.z) + 7 * sample;
  s.t = s.c * static_cast<std::ptrdiff_t>(g.c) + 2 * sample;
  const std::size_t bytes =
      static_cast<std::size_t>(s.t) * g.t + 64 + offset * static_cast<std::size_t>(sample);
  const boost::shared_ptr<std::vector<unsigned char>> memory =
      boost::make_shared<std::vector<unsigned char>>(bytes);
  auto address = reinterpret_cast<std::uintptr_t>(memory->data());
  address = (address + 63) / 64 * 64 + offset * static_cast<std::size_t>(sample);
  const ImagePtr result = Image::wrap(reinterpret_cast<void*>(address), g, image.getBufferType(), s, memory);
  image::copySamples(image, *result);
  return result;
}

inline ImagePtr copyOf(const Image& image) {
  const ImagePtr result = Image::create(image.getGeometry(), image.getBufferType());
  image::copySamples(image, *result);
  return result;
}

/// True when all samples have the same bits.
inline ::testing::AssertionResult sameBits(const Image& a, const Image& b) {
  if (a.getGeometry() != b.getGeometry() || a.getBufferType() != b.getBufferType())
    return ::testing::AssertionFailure() << "geometry or type differ";
  const std::size_t size = getSampleSize(a.getBufferType());
  ::testing::AssertionResult result = ::testing::AssertionSuccess();
  forEachSample(a.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    if (!result) return;
    const auto* one = a.getRow<unsigned char>(y, z, c, t) + x * size;
    const auto* other = b.getRow<unsigned char>(y, z, c, t) + x * size;
    if (std::memcmp(one, other, size) != 0)
      result = ::testing::AssertionFailure()
               << "x " << x << " y " << y << " z " << z << " c " << c << " t " << t << ": "
               << getSample(a, x, y, z, c, t) << " and " << getSample(b, x, y, z, c, t);
  });
  return result;
}

/// Index of the half-sample symmetric mirror image, walked step by step.
inline std::size_t mirrored(std::ptrdiff_t i, std::size_t size) {
  const auto n = static_cast<std::ptrdiff_t>(size);
  while (i < 0 || i >= n) i = i < 0 ? -1 - i : 2 * n - 1 - i;
  return static_cast<std::size_t>(i);
}

/// Restricts a kernel class to one combination of instruction sets for the life of the object.
class ForcedSets {
public:
  ForcedSets(const std::string& className, const processor::InstructionSetsIdentifier& sets)
      : _kernel(boost::dynamic_pointer_cast<processor::BaseProcessingAlgorithm>(
            processor::ProcessorFactory::createProcessor(className))) {
    _kernel->forceInstructionSets(sets);
  }
  ~ForcedSets() { _kernel->releaseForcedInstructionSets(); }

private:
  boost::shared_ptr<processor::BaseProcessingAlgorithm> _kernel;
};

/// The instruction sets that this processor offers and that have a full set of kernels.
inline std::vector<processor::InstructionSetsIdentifier> offeredSets() {
  std::vector<processor::InstructionSetsIdentifier> offered;
  for (const eInstructionSet set : {eIS_Standard, eIS_SSE2, eIS_AVX2, eIS_AVX512})
    if (core::isAvailable(set)) offered.push_back({set});
  return offered;
}

}  // namespace vexo::test
