#include "VEXOProcessing/Steps.h"

namespace vexo::processor {
namespace {

class SingleActionProvider final : public core::BaseActionProvider {
public:
  explicit SingleActionProvider(boost::shared_ptr<BaseProcessor> processor)
      : _processor(std::move(processor)) {}
  std::size_t prepare() override { return 1; }
  void runPiece(std::size_t, const core::RunShare& share) override { _processor->runNested(share); }

private:
  boost::shared_ptr<BaseProcessor> _processor;
};

/// Runs what a retrieve function gives; `retrieve` answers a BoolResult and fills the provider.
template <class Retrieve>
void runProvider(const BaseProcessor& processor, const core::RunShare& share, const Retrieve& retrieve) {
  share.state.throwIfStopped();
  boost::shared_ptr<core::BaseActionProvider> provider;
  if (const BoolResult result = retrieve(share.state.getPriority(), provider); !result)
    processor.raiseFailure(VEXO_HERE, result.getMessage());
  if (provider)
    core::ActionRunner::getInstance().run(*provider, share);
  else
    share.done();
}

}  // namespace

boost::shared_ptr<core::BaseActionProvider> makeSingleActionProvider(
    boost::shared_ptr<BaseProcessor> processor) {
  return boost::make_shared<SingleActionProvider>(std::move(processor));
}

void BaseAsync1Processor::process(const core::RunShare& share) {
  runProvider(*this, share,
              [this](const auto& priority, auto& provider) { return retrieveProvider(priority, provider); });
}

void BaseAsync2Processor::process(const core::RunShare& share) {
  runProvider(*this, share.part(2), [this](const auto& priority, auto& provider) {
    return retrieveFirstProvider(priority, provider);
  });
  runProvider(*this, share.part(2), [this](const auto& priority, auto& provider) {
    return retrieveSecondProvider(priority, provider);
  });
}

void BaseAsync3Processor::process(const core::RunShare& share) {
  runProvider(*this, share.part(3), [this](const auto& priority, auto& provider) {
    return retrieveFirstProvider(priority, provider);
  });
  runProvider(*this, share.part(3), [this](const auto& priority, auto& provider) {
    return retrieveSecondProvider(priority, provider);
  });
  runProvider(*this, share.part(3), [this](const auto& priority, auto& provider) {
    return retrieveThirdProvider(priority, provider);
  });
}

void BaseRepeatedAsync1Processor::process(const core::RunShare& share) {
  const std::size_t count = getRepetitionCount();
  if (count == 0) return share.done();
  for (std::size_t i = 0; i < count; ++i)
    runProvider(*this, share.part(count), [this, i](const auto& priority, auto& provider) {
      return retrieveProvider(priority, i, provider);
    });
}

}  // namespace vexo::processor
