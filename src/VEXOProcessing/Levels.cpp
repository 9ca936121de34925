#include "VEXOProcessing/Levels.h"

#include <algorithm>

#include "VEXOProcessing/Dispatcher.h"

namespace vexo::imaproc {

using processor::BaseAttribute;
using processor::BaseDynamicSplit;
using processor::BaseImageAttribute;
using processor::BaseInputStripAttribute;
using processor::BaseOutputStripAttribute;
using processor::BaseProcessor;
using processor::BaseStaticSplit;

LevelImages::LevelImages(const BaseProcessor& level) {
  for (const auto& attribute : level.getAttributes()) {
    const auto* holder = dynamic_cast<const BaseImageAttribute*>(attribute.get());
    if (!holder || holder->getInfo().isWorkImage()) continue;
    if (holder->isOutput())
      outputs.push_back(boost::const_pointer_cast<image::BaseImage>(holder->getImage()));
    else
      inputs.push_back(holder->getImage());
  }
}

namespace detail {
namespace {

/// For the attribute of that place in the list of the next level; the lists are the same in all its objects.
template <class Base>
class PlacedSplit : public Base {
public:
  PlacedSplit(const BaseAttribute& attribute, std::size_t place)
      : _info(attribute.getInfo()), _place(place) {}
  BoolResult checkProcessorType(const BaseProcessor&) const override { return true; }
  bool isMadeFor(const processor::ProcessorClassInfo&) const override { return true; }
  const std::string& getAttributeName() const override { return _info.name; }
  const char* getAttributeToolTip() const override { return _info.toolTip; }

protected:
  BaseAttribute& attributeOf(const BaseProcessor& next) const { return *next.getAttributes()[_place]; }

private:
  const processor::AttributeInfo& _info;
  std::size_t _place;
};

class StaticValue final : public PlacedSplit<BaseStaticSplit> {
public:
  StaticValue(const BaseAttribute& attribute, std::size_t place, boost::shared_ptr<const BaseAttribute> value)
      : PlacedSplit(attribute, place), _value(std::move(value)) {}
  std::optional<std::size_t> getPieceCount() const override { return std::nullopt; }
  void setPiece(BaseProcessor& next, std::size_t) const override { attributeOf(next).copyValue(*_value); }

private:
  boost::shared_ptr<const BaseAttribute> _value;
};
class DynamicValue final : public PlacedSplit<BaseDynamicSplit> {
public:
  DynamicValue(const BaseAttribute& attribute, std::size_t place,
               boost::shared_ptr<const BaseAttribute> value)
      : PlacedSplit(attribute, place), _value(std::move(value)) {}
  void setPiece(BaseProcessor& next, std::size_t) const override { attributeOf(next).copyValue(*_value); }

private:
  boost::shared_ptr<const BaseAttribute> _value;
};

class SubImages final : public PlacedSplit<BaseStaticSplit>, public BaseSubImageSplit {
public:
  SubImages(const BaseAttribute& attribute, std::size_t place, const image::ConstImagePtr& image,
            eSubImageSplitType type)
      : PlacedSplit(attribute, place) {
    initBase(type, image);
  }
  std::optional<std::size_t> getPieceCount() const override { return getSubImageCount(); }
  void setPiece(BaseProcessor& next, std::size_t piece) const override {
    // Inputs take the handle as one to read.
    static_cast<BaseImageAttribute&>(attributeOf(next))
        .setImage(boost::const_pointer_cast<image::BaseImage>(getSubImage(piece)));
  }
};

class InputStrips final : public PlacedSplit<BaseDynamicSplit> {
public:
  InputStrips(const BaseAttribute& attribute, std::size_t place, StripCutter cutter)
      : PlacedSplit(attribute, place), _cutter(std::move(cutter)) {}
  std::optional<Extent> getExtent() const override { return _cutter.getExtent(); }
  void prepare(const image::StripBounds& bounds) override { _cutter.prepareToRead(bounds); }
  void setPiece(BaseProcessor& next, std::size_t piece) const override {
    static_cast<BaseInputStripAttribute&>(attributeOf(next)).setStrip(_cutter.getInput(piece));
  }

private:
  StripCutter _cutter;
};
class OutputStrips final : public PlacedSplit<BaseDynamicSplit> {
public:
  OutputStrips(const BaseAttribute& attribute, std::size_t place, StripCutter cutter)
      : PlacedSplit(attribute, place), _cutter(std::move(cutter)) {}
  std::optional<Extent> getExtent() const override { return _cutter.getExtent(); }
  void prepare(const image::StripBounds& bounds) override { _cutter.prepareToWrite(bounds); }
  void setPiece(BaseProcessor& next, std::size_t piece) const override {
    static_cast<BaseOutputStripAttribute&>(attributeOf(next)).setStrip(_cutter.getOutput(piece));
  }

private:
  StripCutter _cutter;
};

/// The images in the order in which the attributes of the next level ask for them.
class ImageQueue {
public:
  explicit ImageQueue(const LevelImages& images) : _images(images) {}
  image::ConstImagePtr nextInput(const BaseAttribute& attribute) {
    return next(_images.inputs, _inputs, attribute);
  }
  image::ImagePtr nextOutput(const BaseAttribute& attribute) {
    return next(_images.outputs, _outputs, attribute);
  }

private:
  template <class Images>
  typename Images::value_type next(const Images& images, std::size_t& position,
                                   const BaseAttribute& attribute) {
    if (position >= images.size() || !images[position])
      raiseError(VEXO_HERE, "VEXOProcessing", attribute.getName(), ": no image is handed to it");
    return images[position++];
  }

  const LevelImages& _images;
  std::size_t _inputs = 0, _outputs = 0;
};

template <class Split, class Value, class MakeImageSplit>
std::vector<boost::shared_ptr<Split>> makeSplits(const BaseProcessor& level, const NextLevel& next,
                                                 const GivenParts& given, const MakeImageSplit& split) {
  const processor::AttributeColl& attributes = next.info.sample;
  std::vector<boost::shared_ptr<Split>> splits;
  splits.reserve(attributes.size());
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    const BaseAttribute& attribute = *attributes[i];
    const HandOver from = next.sources[i];
    if (from.source == eSource::Image) {
      splits.push_back(split(attribute, i));
    } else if (from.source == eSource::Value && attribute.isInput()) {
      splits.push_back(boost::make_shared<Value>(attribute, i, level.getAttributes()[from.number]));
    } else if (from.source == eSource::Given) {
      const auto& part = given[from.number];
      if (part.split)
        splits.push_back(boost::dynamic_pointer_cast<Split>(part.split));
      else
        splits.push_back(boost::make_shared<Value>(attribute, i, part.value));
    }
  }
  return splits;
}

}  // namespace

core::ProviderPtr dispatchSubImages(const core::BasePriority& priority, const BaseProcessor& level,
                                    const NextLevel& next, const LevelImages& images, eSubImageSplitType type,
                                    const GivenParts& given) {
  ImageQueue queue(images);
  const auto split = [&](const BaseAttribute& attribute, std::size_t place) {
    const image::ConstImagePtr image =
        attribute.isOutput() ? queue.nextOutput(attribute) : queue.nextInput(attribute);
    return boost::make_shared<SubImages>(attribute, place, image, type);
  };
  const auto dispatcher = boost::make_shared<processor::BaseStaticProcessorDispatcher>(next.info);
  dispatcher->initBase(priority, makeSplits<BaseStaticSplit, StaticValue>(level, next, given, split));
  return dispatcher;
}

boost::shared_ptr<BaseProcessor> makeChild(const BaseProcessor& level, const NextLevel& next,
                                           const LevelImages& images, const GivenParts& given) {
  const boost::shared_ptr<BaseProcessor> child = next.info.createShared();
  child->init(processor::eProcessorRulePolicy::WithRules);
  std::size_t inputs = 0, outputs = 0;
  const auto setImage = [&](BaseAttribute& attribute) {
    auto& holder = static_cast<BaseImageAttribute&>(attribute);
    if (attribute.isOutput()) {
      if (const auto& image = images.outputs.at(outputs++)) holder.setImage(image);
    } else if (const auto& image = images.inputs.at(inputs++)) {
      holder.setImage(boost::const_pointer_cast<image::BaseImage>(image));
    }
  };
  for (std::size_t i = 0; i < child->getAttributes().size(); ++i) {
    BaseAttribute& attribute = *child->getAttributes()[i];
    const HandOver from = next.sources[i];
    if (from.source == eSource::Image)
      setImage(attribute);
    else if (from.source == eSource::Value && attribute.isInput())
      attribute.copyValue(*level.getAttributes()[from.number]);
    else if (from.source == eSource::Given)
      attribute.copyValue(*given[from.number].value);
  }
  return child;
}

core::ProviderPtr dispatchStrips(const core::BasePriority& priority, const BaseProcessor& level,
                                 const NextLevel& next, const LevelImages& images,
                                 image::eStripParsingDirection direction, const image::StripMargins& margins,
                                 image::eStripAllocationType inPlace, const GivenParts& given) {
  using image::eStripAllocationType;
  const auto among = [](const auto& others, const image::BaseImage& image) {
    return std::any_of(others.begin(), others.end(),
                       [&](const auto& other) { return other && image::isSameBuffer(*other, image); });
  };
  ImageQueue queue(images);
  const auto split = [&](const BaseAttribute& attribute,
                         std::size_t place) -> boost::shared_ptr<BaseDynamicSplit> {
    if (attribute.isOutput()) {
      const auto image = queue.nextOutput(attribute);
      const auto allocation = among(images.inputs, *image) ? inPlace : eStripAllocationType::View;
      return boost::make_shared<OutputStrips>(
          attribute, place, StripCutter(image, direction, allocation, {}, attribute.getName()));
    }
    const auto image = queue.nextInput(attribute);
    const auto allocation =
        among(images.outputs, *image) ? eStripAllocationType::OwnBuffer : eStripAllocationType::View;
    return boost::make_shared<InputStrips>(
        attribute, place, StripCutter(image, direction, allocation, margins, attribute.getName()));
  };
  const auto dispatcher = boost::make_shared<processor::BaseDynamicProcessorDispatcher>(next.info);
  dispatcher->initBase(priority, makeSplits<BaseDynamicSplit, DynamicValue>(level, next, given, split));
  return dispatcher;
}

}  // namespace detail

image::StripMargins windowMargins(const BaseProcessor& level) {
  const auto half = [&](const std::type_info& wanted) -> std::size_t {
    for (const auto& attribute : level.getAttributes()) {
      const BaseAttribute& held = *attribute;
      if (typeid(held) == wanted)
        return static_cast<const processor::ValueAttribute<std::uint32_t>&>(held).getStorage();
    }
    return 0;
  };
  return centredMargins(half(typeid(attr::InHalfKnlSizeX)), half(typeid(attr::InHalfKnlSizeY)),
                        half(typeid(attr::InHalfKnlSizeZ)));
}

namespace {

class Leaf final : public core::BaseActionProvider {
public:
  explicit Leaf(std::function<BoolResult()> work) : _work(std::move(work)) {}
  std::size_t prepare() override { return 1; }
  void runPiece(std::size_t, const core::RunShare& share) override {
    if (const BoolResult done = _work(); !done)
      raise<BaseException>("VEXOProcessing", VEXO_HERE, done.getMessage());
    share.done();
  }

private:
  std::function<BoolResult()> _work;
};

}  // namespace

core::ProviderPtr makeLeaf(std::function<BoolResult()> work) {
  return boost::make_shared<Leaf>(std::move(work));
}

}  // namespace vexo::imaproc
