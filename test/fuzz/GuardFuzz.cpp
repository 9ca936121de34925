// Random calls of all filters on images that begin or end right at memory that faults when it is touched.
// Inputs fault when they are written, and what lies between the rows of outputs must stay.

#include <sys/mman.h>
#include <unistd.h>

#include <boost/make_shared.hpp>

#include "RandomCall.h"

namespace vexo::fuzz {
namespace {

/// Pages between two that nobody may touch.
class GuardedMemory {
public:
  explicit GuardedMemory(std::size_t bytes)
      : _page(static_cast<std::size_t>(getpagesize())), _usable((bytes + _page - 1) / _page * _page) {
    void* mapped = mmap(nullptr, _usable + 2 * _page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    require(mapped != MAP_FAILED, "mmap fails");
    _mapped = static_cast<unsigned char*>(mapped);
    allow(PROT_READ | PROT_WRITE);
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory() { munmap(_mapped, _usable + 2 * _page); }

  void allow(int access) { require(mprotect(begin(), _usable, access) == 0, "mprotect fails"); }
  unsigned char* begin() const { return _mapped + _page; }
  unsigned char* end() const { return begin() + _usable; }

private:
  const std::size_t _page, _usable;
  unsigned char* _mapped;
};

class Guarded final : public Placement {
public:
  explicit Guarded(Bytes& bytes)
      : _gap(bytes.below(4)), _atEnd(bytes.oneIn(2)), _upsideDown(bytes.oneIn(4)) {}

  ImagePtr placeInput(const Image& image) override {
    const ImagePtr result = place(image);
    _placed.back().memory->allow(PROT_READ);
    _placed.pop_back();
    return result;
  }
  ImagePtr placeOutput(const Image& image) override { return place(image); }

  /// True when no byte has changed that belongs to no sample of an output.
  bool areGapsWhole() const {
    for (const Placed& placed : _placed) {
      std::vector<unsigned char> bytes(placed.memory->begin(), placed.memory->end());
      forEachRow(*placed.image, [&](const unsigned char* row, std::size_t size) {
        std::memset(&bytes[static_cast<std::size_t>(row - placed.memory->begin())], untouched, size);
      });
      for (const unsigned char byte : bytes)
        if (byte != untouched) return false;
    }
    return true;
  }

private:
  static constexpr unsigned char untouched = 0xa5;
  struct Placed {
    boost::shared_ptr<GuardedMemory> memory;
    ImagePtr image;
  };

  ImagePtr place(const Image& image) {
    const ImageGeometry& g = image.getGeometry();
    const auto type = image.getBufferType();
    const std::size_t sample = getSampleSize(type), gap = _gap * sample;
    const std::size_t y = g.x * sample + gap, z = y * g.y + gap, c = z * g.z + gap, t = c * g.c + gap;
    const std::size_t bytes = (g.t - 1) * t + (g.c - 1) * c + (g.z - 1) * z + (g.y - 1) * y + g.x * sample;
    const auto memory = boost::make_shared<GuardedMemory>(bytes);
    std::memset(memory->begin(), untouched, static_cast<std::size_t>(memory->end() - memory->begin()));
    unsigned char* data = _atEnd ? memory->end() - bytes : memory->begin();
    image::ImageStrides strides;
    strides.y = static_cast<std::ptrdiff_t>(y);
    strides.z = static_cast<std::ptrdiff_t>(z);
    strides.c = static_cast<std::ptrdiff_t>(c);
    strides.t = static_cast<std::ptrdiff_t>(t);
    if (_upsideDown) {
      data += (g.y - 1) * y;
      strides.y = -strides.y;
    }
    const ImagePtr result = Image::wrap(data, g, type, strides, memory);
    image::copySamples(image, *result);
    _placed.push_back({memory, result});
    return result;
  }

  const std::size_t _gap;
  const bool _atEnd, _upsideDown;
  std::vector<Placed> _placed;
};

void checkCall(Bytes& bytes) {
  const RandomCall call(bytes);
  forceInstructionSets(offeredSets()[bytes.below(offeredSets().size())]);
  Dense dense;
  const Outcome reference = call.run(dense, 1);
  const auto check = [&](std::size_t place, const char* what) {
    Guarded guarded(bytes);
    requireEqual(reference, call.run(guarded, 1 + bytes.below(2), place),
                 call.describe() + ": " + what + " between guards");
    require(guarded.areGapsWhole(), call.describe() + ": bytes between the rows have changed");
  };
  check(RandomCall::nowhere, "images");
  for (const std::size_t place : call.findPlaces(reference)) check(place, "in place");
}

}  // namespace
}  // namespace vexo::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vexo::fuzz::Bytes bytes(data, size);
  vexo::fuzz::checkCall(bytes);
  return 0;
}
