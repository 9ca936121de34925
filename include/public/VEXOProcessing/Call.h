#pragma once

#include <boost/make_shared.hpp>

#include "VEXOProcessing/Processor.h"

namespace vexo::processor {

/// A processor with the attributes As set, in this order.
template <class P, class... As>
boost::shared_ptr<P> prepareCall(const typename As::StorageType&... values) {
  const auto processor = boost::make_shared<P>();
  processor->init(eProcessorRulePolicy::WithRules);
  (processor->template set<As>(values), ...);
  return processor;
}

/// The same with the values that the attributes have in another processor.
template <class P, class... As>
boost::shared_ptr<P> prepareChild(const BaseProcessor& parent) {
  return prepareCall<P, As...>(parent.getStorage<As>()...);
}

/// The call forms that every filter has: P is its first level, Out its output, In its parameters in the order
/// of the arguments.
template <class P, class Out, class... In>
struct CallForms {
  using Output = typename Out::StorageType;

  /// Runs; returns a new output, or fills the caller's. Throws on any failure.
  static Output run(const typename In::StorageType&... values) {
    const auto processor = prepareCall<P, In...>(values...);
    executeSyncRun(processor);
    return processor->template getStorage<Out>();
  }
  static void fill(const typename In::StorageType&... values, const Output& output) {
    executeSyncRun(prepareCall<P, In..., Out>(values..., output));
  }

  /// The same in the background. Throws only when a value is refused; a failure of the run is kept by the
  /// processor.
  static boost::shared_ptr<P> start(const typename In::StorageType&... values) {
    return launch(prepareCall<P, In...>(values...));
  }
  static boost::shared_ptr<P> startFill(const typename In::StorageType&... values, const Output& output) {
    return launch(prepareCall<P, In..., Out>(values..., output));
  }

  /// Waits for a run in the background and reads its output; throws the failure of the run when it failed.
  static Output await(const boost::shared_ptr<P>& processor) {
    if (!processor) raiseError(VEXO_HERE, "VEXOProcessing", "getAsyncProcessorOutput: the processor is null");
    processor->wait();
    processor->rethrowFailure();
    return processor->template getStorage<Out>();
  }

private:
  static boost::shared_ptr<P> launch(const boost::shared_ptr<P>& processor) {
    processor->run(core::eSynchroType::Asynchronous);
    return processor;
  }
};

}  // namespace vexo::processor
