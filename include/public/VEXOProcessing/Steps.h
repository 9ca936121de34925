#pragma once

#include "VEXOProcessing/Processor.h"

namespace vexo::processor {

/// A processor as the single action of a provider.
VEXO_API boost::shared_ptr<core::BaseActionProvider> makeSingleActionProvider(
    boost::shared_ptr<BaseProcessor> processor);

/// Processors that delegate to one provider, or to two or three that run one after the other. A provider that
/// stays null has nothing to do.
class VEXO_API BaseAsync1Processor : public BaseProcessor {
protected:
  virtual BoolResult retrieveProvider(const core::BasePriority& priority,
                                      boost::shared_ptr<core::BaseActionProvider>& provider) = 0;
  void process(const core::RunShare& share) override;
};

class VEXO_API BaseAsync2Processor : public BaseProcessor {
protected:
  virtual BoolResult retrieveFirstProvider(const core::BasePriority& priority,
                                           boost::shared_ptr<core::BaseActionProvider>& provider) = 0;
  virtual BoolResult retrieveSecondProvider(const core::BasePriority& priority,
                                            boost::shared_ptr<core::BaseActionProvider>& provider) = 0;
  void process(const core::RunShare& share) override;
};

class VEXO_API BaseAsync3Processor : public BaseAsync2Processor {
protected:
  virtual BoolResult retrieveThirdProvider(const core::BasePriority& priority,
                                           boost::shared_ptr<core::BaseActionProvider>& provider) = 0;
  void process(const core::RunShare& share) override;
};

/// A processor whose provider is retrieved again for each repetition, which may look at what the ones before
/// have done.
class VEXO_API BaseRepeatedAsync1Processor : public BaseProcessor {
protected:
  /// Asked when the run starts.
  virtual std::size_t getRepetitionCount() const = 0;
  virtual BoolResult retrieveProvider(const core::BasePriority& priority, std::size_t repetitionIndex,
                                      boost::shared_ptr<core::BaseActionProvider>& provider) = 0;
  void process(const core::RunShare& share) override;
};

}  // namespace vexo::processor
