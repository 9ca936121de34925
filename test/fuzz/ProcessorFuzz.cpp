// Random calls of all filters: the result must not depend on the instruction set, on the number of threads,
// on gaps between rows, or on whether the output is an input.

#include "RandomCall.h"

namespace vexo::fuzz {
namespace {

class Plain final : public Placement {
public:
  explicit Plain(std::size_t gap) : _gap(gap) {}
  ImagePtr placeInput(const Image& image) override { return place(image); }
  ImagePtr placeOutput(const Image& image) override { return place(image); }

private:
  /// Rows lie `_gap` samples apart, and so the first one begins.
  ImagePtr place(const Image& image) const {
    ImageGeometry wide = image.getGeometry();
    wide.x += _gap;
    const ImagePtr memory = Image::create(wide, image.getBufferType());
    auto* data = static_cast<unsigned char*>(memory->getData()) + _gap * getSampleSize(image.getBufferType());
    const ImagePtr result =
        Image::wrap(data, image.getGeometry(), image.getBufferType(), memory->getStrides(), memory);
    image::copySamples(image, *result);
    return result;
  }

  const std::size_t _gap;
};

void checkCall(Bytes& bytes) {
  const RandomCall call(bytes);
  Plain dense(0), gaps(1 + bytes.below(7));
  forceInstructionSets({eIS_Standard});
  const Outcome reference = call.run(dense, 1);
  const auto requireSame = [&](const Outcome& other, const std::string& what) {
    requireEqual(reference, other, call.describe() + ": 1 thread of standard and " + what);
  };
  for (const auto& sets : offeredSets()) {
    forceInstructionSets(sets);
    const std::size_t threads = bytes.oneIn(2) ? 3 : 1;
    const bool hasGaps = bytes.oneIn(2);
    requireSame(
        call.run(hasGaps ? gaps : dense, threads),
        std::to_string(threads) + " of " + core::toString(sets.getSets()) + (hasGaps ? " with gaps" : ""));
  }
  forceInstructionSets(offeredSets()[bytes.below(offeredSets().size())]);
  for (const std::size_t place : call.findPlaces(reference))
    requireSame(call.run(bytes.oneIn(2) ? gaps : dense, 1 + bytes.below(3), place),
                "in place of input " + std::to_string(place + 1));
}

}  // namespace
}  // namespace vexo::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vexo::fuzz::Bytes bytes(data, size);
  vexo::fuzz::checkCall(bytes);
  return 0;
}
