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

/// Runs the steps one after the other. Each gets a part of what is left of the progress, by its cost beside
/// that of the steps after it; one that has nothing to do leaves its part to them. `retrieve` answers a
/// BoolResult and fills the provider.
template <class Cost, class Retrieve>
void runSteps(const BaseProcessor& processor, const core::RunShare& share, std::size_t count,
              const Cost& cost, const Retrieve& retrieve) {
  double left = share.share;
  for (std::size_t step = 0; step < count; ++step) {
    share.state.throwIfStopped();
    const double own = cost(step);
    double all = own;
    for (std::size_t later = step + 1; later < count; ++later) all += cost(later);
    core::ProviderPtr provider;
    if (const BoolResult result = retrieve(step, share.state.getPriority(), provider); !result)
      processor.raiseFailure(VEXO_HERE, result.getMessage());
    if (!provider) continue;
    const double part = all > 0 ? left * own / all : 0;
    core::ActionRunner::getInstance().run(*provider, {share.state, part});
    left -= part;
  }
  share.state.addProgress(left);
}

}  // namespace

boost::shared_ptr<core::BaseActionProvider> makeSingleActionProvider(
    boost::shared_ptr<BaseProcessor> processor) {
  return boost::make_shared<SingleActionProvider>(std::move(processor));
}

void BaseAsync1Processor::process(const core::RunShare& share) {
  runSteps(
      *this, share, 1, [](std::size_t) { return 1.0; },
      [this](std::size_t, const auto& priority, auto& provider) {
        return retrieveProvider(priority, provider);
      });
}

void BaseAsync2Processor::process(const core::RunShare& share) {
  runSteps(
      *this, share, 2, [this](std::size_t step) { return getStepCost(step); },
      [this](std::size_t step, const auto& priority, auto& provider) {
        return step == 0 ? retrieveFirstProvider(priority, provider)
                         : retrieveSecondProvider(priority, provider);
      });
}

void BaseAsync3Processor::process(const core::RunShare& share) {
  runSteps(
      *this, share, 3, [this](std::size_t step) { return getStepCost(step); },
      [this](std::size_t step, const auto& priority, auto& provider) {
        return step == 0   ? retrieveFirstProvider(priority, provider)
               : step == 1 ? retrieveSecondProvider(priority, provider)
                           : retrieveThirdProvider(priority, provider);
      });
}

void BaseRepeatedAsync1Processor::process(const core::RunShare& share) {
  runSteps(
      *this, share, getRepetitionCount(), [this](std::size_t step) { return getStepCost(step); },
      [this](std::size_t step, const auto& priority, auto& provider) {
        return retrieveProvider(priority, step, provider);
      });
}

}  // namespace vexo::processor
