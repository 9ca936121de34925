#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralLevels.h"

#include <algorithm>

#include "VEXOIPL/VEXOIPLFiltering/ToSample.h"

namespace vexo::imaproc::filter {
namespace {

template <class TIn, class TOut>
void convert(const image::Image& from, image::Image& to) {
  for (std::size_t z = 0; z < from.getSizeZ(); ++z)
    for (std::size_t y = 0; y < from.getSizeY(); ++y) {
      const auto* source = from.getRow<TIn>(y, z);
      std::transform(source, source + from.getSizeX(), to.getRow<TOut>(y, z),
                     [](TIn value) { return toSample<TOut>(value); });
    }
}

}  // namespace

core::ProviderPtr convertSamples(const processor::BaseProcessor& level2, const image::ConstImagePtr& input,
                                 const image::ImagePtr& output) {
  return makeLeaf(level2, [input, output] {
    const image::Image& from = image::hostImage(input, "InImg");
    image::Image& to = image::hostImage(output, "OutImg");
    image::visitBufferType(from.getBufferType(), [&](auto in) {
      image::visitBufferType(to.getBufferType(),
                             [&](auto out) { convert<decltype(in), decltype(out)>(from, to); });
    });
    return BoolResult(true);
  });
}

}  // namespace vexo::imaproc::filter
