// Random calls of all filters: the result must not depend on the instruction set, on the number of threads,
// on gaps between rows, or on whether the output is an input.

#include "RandomCall.h"

namespace vexo::fuzz {
namespace {

/// Images with gaps between their rows.
class Gaps final : public Placement {
public:
  explicit Gaps(std::size_t offset) : _offset(offset) {}
  ImagePtr placeInput(const Image& image) override { return withGaps(image, _offset); }
  ImagePtr placeOutput(const Image& image) override { return withGaps(image, _offset); }

private:
  const std::size_t _offset;
};

void checkCall(Bytes& bytes) {
  const RandomCall call(bytes);
  Dense dense;
  Gaps gaps(1 + bytes.below(7));
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
        call.run(hasGaps ? static_cast<Placement&>(gaps) : dense, threads),
        std::to_string(threads) + " of " + core::toString(sets.getSets()) + (hasGaps ? " with gaps" : ""));
  }
  forceInstructionSets(offeredSets()[bytes.below(offeredSets().size())]);
  for (const std::size_t place : call.findPlaces(reference))
    requireSame(call.run(bytes.oneIn(2) ? static_cast<Placement&>(gaps) : dense, 1 + bytes.below(3), place),
                "in place of input " + std::to_string(place + 1));
}

}  // namespace
}  // namespace vexo::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vexo::fuzz::Bytes bytes(data, size);
  vexo::fuzz::checkCall(bytes);
  return 0;
}
