#pragma once

#include "VEXOProcessing/Split.h"

namespace vexo::processor {

/// Runs a processor once per piece: makes it, sets the attributes that the splits serve, runs it without
/// rules.
class VEXO_API BaseProcessorDispatcher : public core::BaseActionProvider {
public:
  void runPiece(std::size_t pieceIndex, const core::RunShare& share) override;

protected:
  explicit BaseProcessorDispatcher(const ProcessorClassInfo& processorClass) : _class(processorClass) {}
  /// Throws when a split serves another class of processor.
  template <class Split>
  void setSplits(const std::vector<boost::shared_ptr<Split>>& splits) {
    _splits.assign(splits.begin(), splits.end());
    checkSplits();
  }

  const ProcessorClassInfo& _class;

private:
  void checkSplits() const;

  std::vector<boost::shared_ptr<BaseSplit>> _splits;
};

/// The number of pieces is that of the static splits, which must agree. The priority of the pieces is that of
/// the run that they are a part of; it is passed for providers that choose by it.
class VEXO_API BaseStaticProcessorDispatcher : public BaseProcessorDispatcher {
public:
  explicit BaseStaticProcessorDispatcher(const ProcessorClassInfo& processorClass)
      : BaseProcessorDispatcher(processorClass) {}
  void initBase(const core::BasePriority& priority,
                const std::vector<boost::shared_ptr<BaseStaticSplit>>& splits);
  std::size_t prepare() override { return _pieceCount; }

private:
  std::size_t _pieceCount = 0;
};
template <class P>
class StaticProcessorDispatcher : public BaseStaticProcessorDispatcher {
public:
  StaticProcessorDispatcher() : BaseStaticProcessorDispatcher(P::classInfo()) {}
};

/// Cuts the axis that the dynamic splits share into strips, by the dispatch policy of the processor class.
class VEXO_API BaseDynamicProcessorDispatcher : public BaseProcessorDispatcher {
public:
  explicit BaseDynamicProcessorDispatcher(const ProcessorClassInfo& processorClass)
      : BaseProcessorDispatcher(processorClass) {}
  void initBase(const core::BasePriority& priority,
                const std::vector<boost::shared_ptr<BaseDynamicSplit>>& splits);
  std::size_t prepare() override;

private:
  std::vector<boost::shared_ptr<BaseDynamicSplit>> _splits;
};
template <class P>
class DynamicProcessorDispatcher : public BaseDynamicProcessorDispatcher {
public:
  DynamicProcessorDispatcher() : BaseDynamicProcessorDispatcher(P::classInfo()) {}
};

/// The strips of an axis: at multiples of the shortest length that the policy allows, whatever the length of
/// the axis; the last is shorter. So a part of an image that begins at a multiple is cut as it is in the
/// whole.
VEXO_API image::StripBounds cutIntoStrips(std::size_t length, std::size_t margin,
                                          const ProcessorDispatchPolicy& policy);

}  // namespace vexo::processor
