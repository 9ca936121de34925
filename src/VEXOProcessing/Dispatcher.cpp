#include "VEXOProcessing/Dispatcher.h"

#include <log4cplus/logger.h>

#include <algorithm>

namespace vexo::processor {

BaseSplit::~BaseSplit() = default;

void BaseProcessorDispatcher::checkSplits() const {
  boost::shared_ptr<BaseProcessor> sample;
  for (const auto& split : _splits) {
    if (split->isMadeFor(_class)) continue;
    if (!sample) sample = _class.createShared();
    if (const BoolResult served = split->checkProcessorType(*sample); !served)
      raiseMessage<BaseException>(getProcessingLogger(), VEXO_HERE, eProcessorMessage::WrongProcessor,
                                  served.getMessage());
  }
}

void BaseProcessorDispatcher::runPiece(std::size_t pieceIndex, const core::RunShare& share) {
  const boost::shared_ptr<BaseProcessor> processor = _class.createShared();
  // The first level has checked the whole; its pieces need no rules of their own.
  processor->init(eProcessorRulePolicy::WithoutRules);
  for (const auto& split : _splits) split->setPiece(*processor, pieceIndex);
  processor->runNested(share);
}

void BaseStaticProcessorDispatcher::initBase(const core::BasePriority&,
                                             const std::vector<boost::shared_ptr<BaseStaticSplit>>& splits) {
  setSplits(splits);
  _pieceCount = 1;
  const BaseStaticSplit* first = nullptr;
  for (const auto& split : splits) {
    const auto count = split->getPieceCount();
    if (!count) continue;
    if (first && *count != _pieceCount)
      raiseMessage<BaseException>(getProcessingLogger(), VEXO_HERE, eProcessorMessage::UnevenSplits,
                                  first->getAttributeName() + " has " + std::to_string(_pieceCount) +
                                      " pieces, " + split->getAttributeName() + " has " +
                                      std::to_string(*count));
    first = split.get();
    _pieceCount = *count;
  }
}

void BaseDynamicProcessorDispatcher::initBase(
    const core::BasePriority&, const std::vector<boost::shared_ptr<BaseDynamicSplit>>& splits) {
  setSplits(splits);
  _splits = splits;
}

std::size_t BaseDynamicProcessorDispatcher::prepare() {
  std::optional<BaseDynamicSplit::Extent> extent;
  for (const auto& split : _splits) {
    const auto wanted = split->getExtent();
    if (!wanted) continue;
    if (!extent) extent = wanted;
    // A kernel takes the strips of all splits to be of one size: it would write beyond a smaller one.
    if (wanted->direction != extent->direction || !std::equal(wanted->size, wanted->size + 3, extent->size))
      raiseMessage<BaseException>(
          getProcessingLogger(), VEXO_HERE, eProcessorMessage::UnevenSplits,
          split->getAttributeName() + " is cut along another axis, or is of another size");
    extent->margin = std::max(extent->margin, wanted->margin);
  }
  const image::StripBounds bounds = extent ? cutIntoStrips(extent->size[static_cast<int>(extent->direction)],
                                                           extent->margin, _class.dispatchPolicy)
                                           : image::StripBounds{0, 1};
  for (const auto& split : _splits) split->prepare(bounds);
  return bounds.size() - 1;
}

image::StripBounds cutIntoStrips(std::size_t length, std::size_t margin,
                                 const ProcessorDispatchPolicy& policy) {
  const std::size_t shortest =
      std::max<std::size_t>({policy.minStripLength, margin * policy.lengthPerMargin, std::size_t(1)});
  image::StripBounds bounds = {0};
  while (length - bounds.back() > shortest) bounds.push_back(bounds.back() + shortest);
  bounds.push_back(length);
  return bounds;
}

}  // namespace vexo::processor
