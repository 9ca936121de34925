#pragma once

// How the levels of a filter hang together, read off their attribute lists. The images of a level go to the
// image, or strip, attributes of the next one in their order, inputs to inputs and outputs to outputs; every
// other input of the next level has the value that it has in this one. What is given with `with` serves
// its attribute instead. The compiler makes the match: an attribute of the next level that nothing serves
// does not compile. Outputs that are no images are the next level's own, and what goes in and out does not
// come back by itself.

#include <functional>
#include <vector>

#include "VEXOProcessing/Attributes.h"
#include "VEXOProcessing/FilterClass.h"
#include "VEXOProcessing/ImageSplit.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc {

/// The images that a level hands over, in order; work images are none of them. A step of a composite states
/// its own: {{from}, {to}}.
struct VEXO_API LevelImages {
  explicit LevelImages(const processor::BaseProcessor& level);
  LevelImages(std::vector<image::ConstImagePtr> in, std::vector<image::ImagePtr> out)
      : inputs(std::move(in)), outputs(std::move(out)) {}

  std::vector<image::ConstImagePtr> inputs;
  std::vector<image::ImagePtr> outputs;
};

/// What serves the attribute A of the next level: a value for all its pieces, or a split.
template <class A>
struct Given {
  boost::shared_ptr<const processor::BaseAttribute> value;
  boost::shared_ptr<processor::BaseSplit> split;
};
template <class A>
Given<A> with(const typename A::StorageType& value) {
  const boost::shared_ptr<A> attribute(new A);
  attribute->setStorage(value);
  return {attribute, nullptr};
}
template <class A>
Given<A> withSplit(const boost::shared_ptr<processor::BaseSplit>& split) {
  return {nullptr, split};
}

/// A value for each piece of Next, in the order of the sub-images.
template <class Next, class A>
Given<A> withEach(std::vector<typename A::StorageType> values) {
  return withSplit<A>(boost::make_shared<PlanIndexedSplit<Next, A>>(std::move(values)));
}

namespace detail {

enum class eSource : unsigned char { Image, Value, Given, None };

/// Where an attribute of the next level gets its value from: the attribute of this level, or the given part,
/// of that number.
struct HandOver {
  eSource source;
  unsigned char number;
};

using GivenParts = std::vector<Given<void>>;

template <class A>
using StorageOf = typename A::StorageType;
template <class A>
inline constexpr bool isInputImage = std::is_same_v<StorageOf<A>, image::ConstImagePtr>;
template <class A>
inline constexpr bool isWorkImage = std::is_base_of_v<attr::WorkImage, A>;
template <class A>
inline constexpr bool isOutputImage = std::is_same_v<StorageOf<A>, image::ImagePtr> && !isWorkImage<A>;
template <class A>
inline constexpr bool isInputStrip = std::is_base_of_v<processor::BaseInputStripAttribute, A>;
template <class A>
inline constexpr bool isOutputStrip = std::is_base_of_v<processor::BaseOutputStripAttribute, A>;

template <class... As>
struct Types {
  static constexpr int inputs = (0 + ... + (isInputImage<As> || isInputStrip<As>));
  static constexpr int outputs = (0 + ... + (isOutputImage<As> || isOutputStrip<As>));
  /// -1 when A is none of them.
  template <class A>
  static constexpr int find() {
    int position = -1, i = 0;
    ((position = std::is_same_v<A, As> ? i : position, ++i), ...);
    return position;
  }
};
template <class List>
struct TypesOf;
template <class... As>
struct TypesOf<processor::AttributeList<As...>> : Types<As...> {};

template <class A, class Level, class Next, class... Gs>
constexpr HandOver findSource() {
  constexpr int own = TypesOf<typename Level::Attributes>::template find<A>();
  constexpr int given = Types<Gs...>::template find<A>();
  if constexpr (given >= 0) {
    return {eSource::Given, static_cast<unsigned char>(given)};
  } else if constexpr (isWorkImage<A>) {
    return {eSource::None, 0};
  } else if constexpr (isInputImage<A> || isOutputImage<A> || isInputStrip<A> || isOutputStrip<A>) {
    return {eSource::Image, 0};
  } else {
    static_assert(own >= 0, "the attribute A of Next is no attribute of Level, and it is not given");
    return {eSource::Value, static_cast<unsigned char>(own)};
  }
}

/// The next level, and where its attributes get their values from, in their order.
struct NextLevel {
  const processor::ProcessorClassInfo& info;
  const HandOver* sources;
};
template <class Level, class Next, class... Gs, class... As>
NextLevel nextLevel(processor::AttributeList<As...>) {
  static constexpr HandOver sources[] = {findSource<As, Level, Next, Gs...>()...};
  return {Next::classInfo(), sources};
}
template <class Level, class Next>
constexpr void checkImageCount() {
  using From = TypesOf<typename Level::Attributes>;
  using To = TypesOf<typename Next::Attributes>;
  static_assert(From::inputs >= To::inputs && From::outputs >= To::outputs,
                "Next has more images than Level hands over");
}
template <class... Gs>
GivenParts partsOf(const Given<Gs>&... given) {
  return {Given<void>{given.value, given.split}...};
}

VEXO_API core::ProviderPtr dispatchSubImages(const core::BasePriority& priority,
                                             const processor::BaseProcessor& level, const NextLevel& next,
                                             const LevelImages& images, eSubImageSplitType type,
                                             const GivenParts& given);
VEXO_API boost::shared_ptr<processor::BaseProcessor> makeChild(const processor::BaseProcessor& level,
                                                               const NextLevel& next,
                                                               const LevelImages& images,
                                                               const GivenParts& given);
VEXO_API core::ProviderPtr dispatchStrips(const core::BasePriority& priority,
                                          const processor::BaseProcessor& level, const NextLevel& next,
                                          const LevelImages& images, image::eStripParsingDirection direction,
                                          const image::StripMargins& margins,
                                          image::eStripAllocationType inPlace, const GivenParts& given);

}  // namespace detail

/// What a first level does: Next on each plane, or volume, of its images.
template <class Next, eSubImageSplitType type, class Level, class... Gs>
core::ProviderPtr dispatchSubImages(const core::BasePriority& priority, const Level& level,
                                    const LevelImages& images, const Given<Gs>&... given) {
  return detail::dispatchSubImages(priority, level,
                                   detail::nextLevel<Level, Next, Gs...>(typename Next::Attributes()), images,
                                   type, detail::partsOf(given...));
}
template <class Next, class Level, class... Gs>
core::ProviderPtr dispatchPlanes(const core::BasePriority& priority, const Level& level,
                                 const Given<Gs>&... given) {
  detail::checkImageCount<Level, Next>();
  return dispatchSubImages<Next, eSubImageSplitType::Plane2d>(priority, level, LevelImages(level), given...);
}
template <class Next, class Level, class... Gs>
core::ProviderPtr dispatchVolumes(const core::BasePriority& priority, const Level& level,
                                  const Given<Gs>&... given) {
  detail::checkImageCount<Level, Next>();
  return dispatchSubImages<Next, eSubImageSplitType::Volume3d>(priority, level, LevelImages(level), given...);
}
/// A step of a composite, on images of its own.
template <class Next, class Level, class... Gs>
core::ProviderPtr dispatchPlanes(const core::BasePriority& priority, const Level& level,
                                 const LevelImages& images, const Given<Gs>&... given) {
  return dispatchSubImages<Next, eSubImageSplitType::Plane2d>(priority, level, images, given...);
}
template <class Next, class Level, class... Gs>
core::ProviderPtr dispatchVolumes(const core::BasePriority& priority, const Level& level,
                                  const LevelImages& images, const Given<Gs>&... given) {
  return dispatchSubImages<Next, eSubImageSplitType::Volume3d>(priority, level, images, given...);
}

/// A step of a composite: Child, a first level, on its images, or on others.
template <class Child, class Level, class... Gs>
core::ProviderPtr runChild(const Level& level, const LevelImages& images, const Given<Gs>&... given) {
  return processor::makeSingleActionProvider(
      detail::makeChild(level, detail::nextLevel<Level, Child, Gs...>(typename Child::Attributes()), images,
                        detail::partsOf(given...)));
}
template <class Child, class Level, class... Gs>
core::ProviderPtr runChild(const Level& level, const Given<Gs>&... given) {
  detail::checkImageCount<Level, Child>();
  return runChild<Child>(level, LevelImages(level), given...);
}
/// The rule of such a child, on the values that the level has when it is checked; what is given is a
/// constant, as it stands when the rule is made.
template <class Child, class Level, class... Gs>
processor::RulePtr childAccepts(const Level& level, const Given<Gs>&... given) {
  return processor::makeRule([&level, given...] {
    return detail::makeChild(level, detail::nextLevel<Level, Child, Gs...>(typename Child::Attributes()),
                             LevelImages(level), detail::partsOf(given...))
        ->checkRule();
  });
}

/// How a second level cuts its images. In place, the margins of each strip are saved before the first strip
/// starts; `inPlace` says whether the output needs a buffer of its own then: not when the kernel loads every
/// sample of its strip before it writes over it (View).
struct StripCut {
  image::StripMargins margins = {};
  image::eStripAllocationType inPlace = image::eStripAllocationType::View;
  image::eStripParsingDirection direction = image::eStripParsingDirection::Y;
};

/// What a second level does: Next on strips of its images, those of the inputs with margins.
template <class Next, class Level, class... Gs>
core::ProviderPtr dispatchStrips(const core::BasePriority& priority, const Level& level, const StripCut& cut,
                                 const LevelImages& images, const Given<Gs>&... given) {
  return detail::dispatchStrips(priority, level,
                                detail::nextLevel<Level, Next, Gs...>(typename Next::Attributes()), images,
                                cut.direction, cut.margins, cut.inPlace, detail::partsOf(given...));
}
template <class Next, class Level, class... Gs>
core::ProviderPtr dispatchStrips(const core::BasePriority& priority, const Level& level, const StripCut& cut,
                                 const Given<Gs>&... given) {
  detail::checkImageCount<Level, Next>();
  return dispatchStrips<Next>(priority, level, cut, LevelImages(level), given...);
}

/// Margins of the half sizes that the level has among InHalfKnlSizeX, Y and Z.
VEXO_API image::StripMargins windowMargins(const processor::BaseProcessor& level);

/// A second level that cuts its plane, or volume, into strips for Next. Derived states Attributes and
/// toolTipId, and getCut() unless it cuts along Y, with the margins of its half sizes, and writes in place at
/// once.
template <class Derived, class Next>
class VEXO_API StripLevel : public FilterClass<Derived, processor::BaseAsync1Processor> {
protected:
  virtual StripCut getCut() const { return {windowMargins(*this)}; }
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    provider = dispatchStrips<Next>(priority, static_cast<const Derived&>(*this), getCut());
    return true;
  }
};

/// A second level whose samples depend on those at their own place alone: any number of images, no margins.
template <class Derived, class Next>
class VEXO_API PointLevel : public StripLevel<Derived, Next> {
protected:
  StripCut getCut() const override { return {}; }
};

/// A leaf for C++ code that is no kernel, on a whole plane or volume: `work` runs in the threads of the run,
/// and fails it with its message.
VEXO_API core::ProviderPtr makeLeaf(const processor::BaseProcessor& level, std::function<BoolResult()> work);

/// Keeps the classes of a filter registered while it exists, third levels with their kernels; each filter has
/// a static one.
template <class Level, bool hasKernels = std::is_base_of_v<processor::BaseProcessingAlgorithm, Level>>
struct LevelRegistrator : processor::ProcessorRegistrator<Level> {};
template <class Level>
struct LevelRegistrator<Level, true> : processor::ProcessorRegistrator<Level> {
  processor::KernelRegistrator kernels{Level::retrieveFunctionSelector(),
                                       processor::kernelObjects<typename Level::KernelSource>()};
};
template <class... Levels>
struct FilterRegistrator : LevelRegistrator<Levels>... {};

}  // namespace vexo::imaproc
