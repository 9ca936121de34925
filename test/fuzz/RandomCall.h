#pragma once

// A call of a processor with random attributes and images, decided by the bytes of an input.

#include <functional>
#include <utility>

#include "Fuzz.h"
#include "tools/Filters.h"

namespace vexo::fuzz {

using namespace test;

/// Numbers that do not come from the bytes one by one, because there are too many.
class Random {
public:
  explicit Random(std::uint32_t seed) : _state(seed * 0x9e3779b97f4a7c15u + 1) {}
  std::uint64_t operator()() {
    _state ^= _state << 13;
    _state ^= _state >> 7;
    _state ^= _state << 17;
    return _state * 0x2545f4914f6cdd1du;
  }

private:
  std::uint64_t _state;
};

template <class T>
T specialSample(std::uint64_t choice) {
  using Limits = std::numeric_limits<T>;
  if constexpr (std::is_floating_point_v<T>) {
    const T values[] = {0,
                        T(-0.0),
                        1,
                        T(0.5),
                        T(2.5),
                        -1,
                        Limits::quiet_NaN(),
                        -Limits::quiet_NaN(),
                        Limits::infinity(),
                        -Limits::infinity(),
                        Limits::max(),
                        Limits::lowest(),
                        Limits::min(),
                        Limits::denorm_min(),
                        T(16777217.0),
                        T(4294967295.0)};
    return values[choice % std::size(values)];
  } else {
    const T values[] = {
        0, 1, T(-1), Limits::max(), Limits::lowest(), Limits::max() / 2, Limits::max() / 2 + 1};
    return values[choice % std::size(values)];
  }
}

inline void fillSamples(Image& image, Bytes& bytes) {
  const std::size_t kind = bytes.below(6);
  Random random(bytes.take<std::uint16_t>());
  const ImageGeometry& g = image.getGeometry();
  visitBufferType(image.getBufferType(), [&](auto zero) {
    using T = decltype(zero);
    T* samples = static_cast<T*>(image.getData());
    const std::size_t count = g.x * g.y * g.z * g.c * g.t;
    const T constant = specialSample<T>(random());
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint64_t bits = random();
      if (kind == 0)
        std::memcpy(samples + i, &bits, sizeof(T));
      else if (kind == 1)
        samples[i] = T(bits % 4);
      else if (kind == 2)
        samples[i] = constant;
      else if (kind == 3)
        samples[i] = specialSample<T>(bits);
      else if (kind == 4)  // ordinary values, few special ones
        samples[i] = bits >> 58 == 0 ? specialSample<T>(bits) : T(bits % 1000);
      else
        samples[i] = T(i % 100);
    }
  });
}

/// Sizes of few samples, so that much is tried: mostly small, at times long along one axis, where an image is
/// cut into strips and lines fill many vectors.
inline ImageGeometry randomGeometry(Bytes& bytes) {
  constexpr std::size_t mostSamples = 2048;
  ImageGeometry g;
  g.x = 1 + bytes.below(24);
  g.y = 1 + bytes.below(24);
  if (bytes.oneIn(3)) g.z = 1 + bytes.below(12);
  if (bytes.oneIn(6)) g.c = 1 + bytes.below(3);
  if (bytes.oneIn(6)) g.t = 1 + bytes.below(3);
  if (bytes.oneIn(4)) {
    std::size_t* const axes[] = {&g.x, &g.y, &g.z};
    *bytes.oneOf(axes) = 1 + bytes.below(300);
  }
  for (std::size_t* size : {&g.t, &g.c, &g.z, &g.y, &g.x})
    *size = std::clamp<std::size_t>(mostSamples / (g.x * g.y * g.z * g.c * g.t / *size), 1, *size);
  return g;
}

inline eImageBufferType randomType(Bytes& bytes) {
  return static_cast<eImageBufferType>(bytes.below(image::imageBufferTypeCount));
}

/// Texts of values. Numbers that say how large a window is stay small, or are so large that they are refused:
/// in between they are as good, but slow.
class RandomText {
public:
  explicit RandomText(Bytes& bytes) : _bytes(bytes) {}

  std::string make(const processor::BaseAttribute& attribute) {
    const std::string &name = attribute.getName(), type = attribute.getValueTypeName();
    if (_bytes.oneIn(64)) return _bytes.text(_bytes.below(24));
    if (const std::size_t bar = type.find('|'); bar != std::string::npos) return oneName(type);
    if (type == "bool") return _bytes.oneIn(2) ? "true" : "false";
    if (type == "unsigned") return count(name);
    if (type == "float" || type == "double") {
      const bool isSize = name.find("Space") != std::string::npos || name.find("StdDev") != std::string::npos;
      return isSize ? size() : number();
    }
    if (type == "KernelXY") return kernel(2);
    if (type == "KernelXYZ") return kernel(3);
    if (type == "Range") return range();
    if (type == "GaussianCoverage") return share() + "," + count(name);
    if (type == "BorderPolicy" || type == "Border2dPolicy" || type == "Border3dPolicy") return border();
    const ParameterValues& values = valuesOf(attribute);
    const std::size_t choice = _bytes.below(2 + values.refused.size());
    return choice < 2 ? values.taken[choice] : values.refused[choice - 2];
  }

private:
  std::string oneName(const std::string& names) {
    std::vector<std::string> found(1);
    for (const char c : names) c == '|' ? found.emplace_back() : found.back() += c;
    found.push_back(std::to_string(_bytes.below(20)));
    return found[_bytes.below(found.size())];
  }
  std::string count(const std::string& name) {
    static constexpr std::uint32_t large[] = {32768, 65535, 0x7fffffff, 0x80000000, 0xffffffff};
    if (_bytes.oneIn(24)) return std::to_string(_bytes.oneOf(large));
    // At most along one axis, and only where the name says that there is one.
    const bool isLong = name.back() >= 'X' && name.back() <= 'Z' && !_hasLong && _bytes.oneIn(6);
    _hasLong = _hasLong || isLong;
    return std::to_string(_bytes.below(isLong ? 64 : 5));
  }
  std::string size() {
    static constexpr const char* values[] = {"0",   "0.3", "0.5", "0.7", "1",     "1.3",  "1.5", "2",
                                             "2.2", "3",   "-0",  "-1",  "1e-30", "1e30", "nan", "inf"};
    return _bytes.oneOf(values);
  }
  std::string share() {
    static constexpr const char* values[] = {"0.997", "0.5", "0.9", "0.9999999", "1e-9",
                                             "0",     "1",   "-1",  "nan"};
    return _bytes.oneOf(values);
  }
  std::string number() {
    static constexpr const char* values[] = {
        "0",    "1",     "0.5",   "2",          "3",           "10",    "100",   "255",   "256",
        "1000", "65535", "-1",    "4294967295", "-2147483648", "nan",   "inf",   "-inf",  "1e-30",
        "1e30", "-1e30", "1e-45", "-0",         "0.1",         "-0.25", "1e300", "1e-300"};
    return _bytes.oneIn(4) ? ScalarText<float>::toText(_bytes.take<float>()) : _bytes.oneOf(values);
  }
  std::string kernel(std::size_t axes) {
    static constexpr const char* weights[] = {"1",  "0.5",  "-1",  "0.25", "0.111", "3",    "0",
                                              "-0", "1e30", "nan", "inf",  "1e-45", "-2.5", "1e-30"};
    std::string text;
    const std::size_t points = _bytes.below(10);
    const std::size_t reach = _bytes.oneIn(8) ? 40 : 3;
    const std::size_t known = _bytes.oneIn(3) ? std::size(weights) : 6;  // mostly weights of ordinary sums
    for (std::size_t i = 0; i < points; ++i) {
      for (std::size_t axis = 0; axis < axes; ++axis)
        text +=
            std::to_string(static_cast<long>(_bytes.below(2 * reach + 1)) - static_cast<long>(reach)) + ",";
      text += std::string(weights[_bytes.below(known)]) + ";";
    }
    return text;
  }
  std::string range() {
    static constexpr const char* values[] = {"0,255",   "0,256",   "1,1000",       "-3000,3000",
                                             "7,7",     "-1,0.5",  "0,4294967295", "-1e30,1e30",
                                             "0,1e-30", "-inf,inf"};
    if (!_bytes.oneIn(3)) return _bytes.oneOf(values);
    const std::string one = number(), other = number();
    return one + "," + other;
  }
  std::string border() {
    static constexpr const char* names[] = {"mirror", "replicate", "circular"};
    const std::size_t choice = _bytes.below(4);
    return choice < 3 ? names[choice] : "constant=" + number();
  }

  Bytes& _bytes;
  bool _hasLong = false;
};

/// What comes out of a run: that it was refused, or images and the texts of other outputs.
struct Outcome {
  std::string refusal;
  Result result;
};

/// How the images of a run lie in memory, and what the run must leave alone there.
class Placement {
public:
  virtual ~Placement() = default;
  /// A copy that is only read.
  virtual ImagePtr placeInput(const Image& image) = 0;
  /// An image that is written; with what it holds now, when it is an input as well.
  virtual ImagePtr placeOutput(const Image& image) = 0;
};

/// Without gaps.
class Dense final : public Placement {
public:
  ImagePtr placeInput(const Image& image) override { return copyOf(image); }
  ImagePtr placeOutput(const Image& image) override { return copyOf(image); }
};

class RandomCall {
public:
  explicit RandomCall(Bytes& bytes) {
    static const std::vector<std::string> names = filterNames();
    require(!names.empty(), "no processor is loaded");
    _className = names[bytes.below(names.size())];
    const auto processor = create();
    const ImageGeometry geometry = randomGeometry(bytes);
    const eImageBufferType type = randomType(bytes);
    RandomText texts(bytes);
    for (const auto& attribute : processor->getAttributes()) {
      const auto* image = dynamic_cast<const processor::BaseImageAttribute*>(attribute.get());
      const std::string& name = attribute->getName();
      if (image && attribute->isInput())
        _inputs.emplace_back(name, makeInput(bytes, name, geometry, type));
      else if (image && !attribute->isOptional() && bytes.oneIn(2))
        _outputs.emplace_back(name, Image::create(geometry, bytes.oneIn(2) ? randomType(bytes) : type));
      else if (!image && attribute->isInput() && !(attribute->isOptional() && bytes.oneIn(3)))
        _texts.emplace_back(name, texts.make(*attribute));
    }
    // What a run leaves out shows.
    for (const auto& [name, output] : _outputs) fillSamples(*output, bytes);
  }

  /// Inputs whose memory can take the output of this outcome.
  std::vector<std::size_t> findPlaces(const Outcome& outcome) const {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < _inputs.size() && outcome.result.images.size() == 1; ++i)
      if (_inputs[i].second->getGeometry() == outcome.result.images[0]->getGeometry() &&
          _inputs[i].second->getBufferType() == outcome.result.images[0]->getBufferType())
        places.push_back(i);
    return places;
  }

  static constexpr std::size_t nowhere = std::numeric_limits<std::size_t>::max();
  /// Runs with this many threads. The output goes to the input `place`, where there is one.
  Outcome run(Placement& placement, std::size_t threads, std::size_t place = nowhere) const {
    Outcome outcome;
    const auto processor = create();
    outcome.refusal = refusalOf([&] {
      for (const auto& [name, text] : _texts)
        if (const BoolResult set = processor->findAttribute(name)->setText(text); !set)
          raiseError(VEXO_HERE, "fuzz", set.getMessage());
      ImagePtr shared;
      for (std::size_t i = 0; i < _inputs.size(); ++i) {
        const auto& [name, image] = _inputs[i];
        const ImagePtr placed = i == place ? placement.placeOutput(*image) : placement.placeInput(*image);
        if (i == place) shared = placed;
        setImage(*processor, name, placed);
      }
      if (shared)
        imageOutput(*processor)->setImage(shared);
      else
        for (const auto& [name, image] : _outputs) setImage(*processor, name, placement.placeOutput(*image));
      processor->setThreadLimit(threads);
      processor::executeSyncRun(processor);
    });
    if (outcome.refusal.empty()) outcome.result = resultOf(*processor);
    return outcome;
  }

  /// The call in words, for whoever looks for the fault.
  std::string describe() const {
    std::string text = _className;
    for (const auto& [name, value] : _texts) text += " --" + name + " '" + value + "'";
    for (const auto& [name, image] : _inputs) text += describe(name, *image);
    for (const auto& [name, image] : _outputs) text += describe(name, *image);
    return text;
  }

private:
  boost::shared_ptr<processor::BaseProcessor> create() const {
    const auto processor = processor::ProcessorFactory::createProcessor(_className);
    require(processor->init().isOk(), _className + " cannot be initialised");
    return processor;
  }

  static ImagePtr makeInput(Bytes& bytes, const std::string& name, ImageGeometry geometry,
                            eImageBufferType type) {
    if (isMask(name)) type = eImageBufferType::UInt8;
    if (bytes.oneIn(8)) type = randomType(bytes);
    if (bytes.oneIn(64)) geometry = randomGeometry(bytes);
    const ImagePtr image = Image::create(geometry, type);
    fillSamples(*image, bytes);
    return image;
  }

  static void setImage(processor::BaseProcessor& processor, const std::string& name, const ImagePtr& image) {
    boost::dynamic_pointer_cast<processor::BaseImageAttribute>(processor.findAttribute(name))
        ->setImage(image);
  }
  static std::string describe(const std::string& name, const Image& image) {
    return " " + name + ": " + toString(image.getGeometry()) + " " + toString(image.getBufferType());
  }

  std::string _className;
  std::vector<std::pair<std::string, std::string>> _texts;
  std::vector<std::pair<std::string, ImagePtr>> _inputs, _outputs;
};

/// Refused alike, or equal in every bit.
inline void requireEqual(const Outcome& one, const Outcome& other, const std::string& what) {
  require(one.refusal == other.refusal, what + ": '" + one.refusal + "' and '" + other.refusal + "'");
  const std::string difference = findDifference(one.result, other.result);
  require(difference.empty(), what + ": " + difference);
}

}  // namespace vexo::fuzz
