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

using SetPiece = std::function<void(BaseAttribute& attribute, std::size_t piece)>;

/// Serves the attribute of that place in the list of the next level; the lists are the same in all its
/// objects.
template <class Base>
class PlacedSplit : public Base {
public:
  PlacedSplit(const BaseAttribute& attribute, std::size_t place, SetPiece set)
      : _info(attribute.getInfo()), _place(place), _set(std::move(set)) {}
  BoolResult checkProcessorType(const BaseProcessor&) const override { return true; }
  bool isMadeFor(const processor::ProcessorClassInfo&) const override { return true; }
  const std::string& getAttributeName() const override { return _info.name; }
  const char* getAttributeToolTip() const override { return _info.toolTip; }
  void setPiece(BaseProcessor& next, std::size_t piece) const override {
    _set(*next.getAttributes()[_place], piece);
  }

private:
  const processor::AttributeInfo& _info;
  std::size_t _place;
  SetPiece _set;
};

class StaticSplit final : public PlacedSplit<BaseStaticSplit> {
public:
  StaticSplit(const BaseAttribute& attribute, std::size_t place, SetPiece set,
              std::optional<std::size_t> pieceCount = {})
      : PlacedSplit(attribute, place, std::move(set)), _pieceCount(pieceCount) {}
  std::optional<std::size_t> getPieceCount() const override { return _pieceCount; }

private:
  std::optional<std::size_t> _pieceCount;
};

class DynamicSplit final : public PlacedSplit<BaseDynamicSplit> {
public:
  DynamicSplit(const BaseAttribute& attribute, std::size_t place, SetPiece set,
               boost::shared_ptr<StripCutter> cutter = {})
      : PlacedSplit(attribute, place, std::move(set)), _cutter(std::move(cutter)) {}
  std::optional<Extent> getExtent() const override {
    return _cutter ? std::optional<Extent>(_cutter->getExtent()) : std::nullopt;
  }
  void prepare(const image::StripBounds& bounds) override {
    if (_cutter) _cutter->prepare(bounds);
  }

private:
  boost::shared_ptr<StripCutter> _cutter;
};

/// The images in the order in which the attributes of the next level ask for them. An optional one may stay
/// without.
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
    const auto image = position < images.size() ? images[position++] : nullptr;
    if (!image && !attribute.isOptional())
      raiseError(VEXO_HERE, "VEXOProcessing", attribute.getName(), ": no image is handed to it");
    return image;
  }

  const LevelImages& _images;
  std::size_t _inputs = 0, _outputs = 0;
};

[[noreturn]] void raiseWrongSplit(const BaseAttribute& attribute) {
  raiseError(VEXO_HERE, "VEXOProcessing", attribute.getName(),
             ": the split that is given is of another kind");
}

SetPiece copyOf(boost::shared_ptr<const BaseAttribute> value) {
  return [value = std::move(value)](BaseAttribute& attribute, std::size_t) { attribute.copyValue(*value); };
}

template <class Base, class Split, class MakeImageSplit>
std::vector<boost::shared_ptr<Base>> makeSplits(const BaseProcessor& level, const NextLevel& next,
                                                const GivenParts& given, const MakeImageSplit& split) {
  const processor::AttributeColl& attributes = next.info.sample;
  std::vector<boost::shared_ptr<Base>> splits;
  splits.reserve(attributes.size());
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    const BaseAttribute& attribute = *attributes[i];
    const HandOver from = next.sources[i];
    if (attribute.getInfo().isWorkImage()) continue;
    if (from.source == eSource::Image) {
      if (const auto made = split(attribute, i)) splits.push_back(made);
    } else if (from.source == eSource::Value && attribute.isInput()) {
      splits.push_back(boost::make_shared<Split>(attribute, i, copyOf(level.getAttributes()[from.number])));
    } else if (from.source == eSource::Given && given[from.number].split) {
      splits.push_back(boost::dynamic_pointer_cast<Base>(given[from.number].split));
      if (!splits.back()) raiseWrongSplit(attribute);
    } else if (from.source == eSource::Given) {
      splits.push_back(boost::make_shared<Split>(attribute, i, copyOf(given[from.number].value)));
    }
  }
  return splits;
}

}  // namespace

core::ProviderPtr dispatchSubImages(const core::BasePriority& priority, const BaseProcessor& level,
                                    const NextLevel& next, const LevelImages& images, eSubImageSplitType type,
                                    const GivenParts& given) {
  ImageQueue queue(images);
  const auto split = [&](const BaseAttribute& attribute,
                         std::size_t place) -> boost::shared_ptr<StaticSplit> {
    const image::ConstImagePtr image =
        attribute.isOutput() ? queue.nextOutput(attribute) : queue.nextInput(attribute);
    if (!image) return nullptr;
    const auto parts = boost::make_shared<BaseSubImageSplit>();
    parts->initBase(type, image);
    const auto set = [parts](BaseAttribute& holder, std::size_t piece) {
      // Inputs take the handle as one to read.
      static_cast<BaseImageAttribute&>(holder).setImage(
          boost::const_pointer_cast<image::BaseImage>(parts->getSubImage(piece)));
    };
    return boost::make_shared<StaticSplit>(attribute, place, set, parts->getSubImageCount());
  };
  const auto dispatcher = boost::make_shared<processor::BaseStaticProcessorDispatcher>(next.info);
  dispatcher->initBase(priority, makeSplits<BaseStaticSplit, StaticSplit>(level, next, given, split));
  return dispatcher;
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
                         std::size_t place) -> boost::shared_ptr<DynamicSplit> {
    boost::shared_ptr<StripCutter> cutter;
    SetPiece set;
    if (attribute.isOutput()) {
      const auto image = queue.nextOutput(attribute);
      if (!image) return nullptr;
      const auto allocation = among(images.inputs, *image) ? inPlace : eStripAllocationType::View;
      cutter = boost::make_shared<StripCutter>(image, direction, allocation, attribute.getName());
      set = [cutter](BaseAttribute& holder, std::size_t piece) {
        static_cast<BaseOutputStripAttribute&>(holder).setStrip(cutter->getOutput(piece));
      };
    } else {
      const auto image = queue.nextInput(attribute);
      if (!image) return nullptr;
      const auto allocation =
          among(images.outputs, *image) ? eStripAllocationType::OwnBuffer : eStripAllocationType::View;
      cutter = boost::make_shared<StripCutter>(image, direction, allocation, margins, attribute.getName());
      set = [cutter](BaseAttribute& holder, std::size_t piece) {
        static_cast<BaseInputStripAttribute&>(holder).setStrip(cutter->getInput(piece));
      };
    }
    return boost::make_shared<DynamicSplit>(attribute, place, set, cutter);
  };
  const auto dispatcher = boost::make_shared<processor::BaseDynamicProcessorDispatcher>(next.info);
  dispatcher->initBase(priority, makeSplits<BaseDynamicSplit, DynamicSplit>(level, next, given, split));
  return dispatcher;
}

boost::shared_ptr<BaseProcessor> makeChild(const BaseProcessor& level, const NextLevel& next,
                                           const LevelImages& images, const GivenParts& given) {
  const boost::shared_ptr<BaseProcessor> child = next.info.createShared();
  child->init(processor::eProcessorRulePolicy::WithRules);
  std::size_t inputs = 0, outputs = 0;
  // An image that is not there yet stays unset: the child's own checks speak of it.
  const auto setNext = [](BaseAttribute& attribute, const auto& of, std::size_t& position) {
    const image::ConstImagePtr image = position < of.size() ? of[position++] : nullptr;
    if (image)
      static_cast<BaseImageAttribute&>(attribute).setImage(
          boost::const_pointer_cast<image::BaseImage>(image));
  };
  for (std::size_t i = 0; i < child->getAttributes().size(); ++i) {
    BaseAttribute& attribute = *child->getAttributes()[i];
    const HandOver from = next.sources[i];
    if (from.source == eSource::Image && attribute.isOutput()) {
      setNext(attribute, images.outputs, outputs);
    } else if (from.source == eSource::Image) {
      setNext(attribute, images.inputs, inputs);
    } else if (from.source == eSource::Value && attribute.isInput()) {
      attribute.copyValue(*level.getAttributes()[from.number]);
    } else if (from.source == eSource::Given) {
      if (!given[from.number].value) raiseWrongSplit(attribute);
      attribute.copyValue(*given[from.number].value);
    }
  }
  return child;
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
  Leaf(const BaseProcessor& level, std::function<BoolResult()> work)
      : _level(level), _work(std::move(work)) {}
  std::size_t prepare() override { return 1; }
  void runPiece(std::size_t, const core::RunShare& share) override {
    if (const BoolResult done = _work(); !done) _level.raiseFailure(VEXO_HERE, done.getMessage());
    share.done();
  }

private:
  const BaseProcessor& _level;  ///< which waits for the run
  std::function<BoolResult()> _work;
};

}  // namespace

core::ProviderPtr makeLeaf(const BaseProcessor& level, std::function<BoolResult()> work) {
  return boost::make_shared<Leaf>(level, std::move(work));
}

}  // namespace vexo::imaproc
