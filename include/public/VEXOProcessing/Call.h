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

/// The synchronous call: runs and returns the processor, whose outputs can be read. Throws on any failure.
template <class P, class... As>
boost::shared_ptr<P> runCall(const typename As::StorageType&... values) {
  const auto processor = prepareCall<P, As...>(values...);
  executeSyncRun(processor);
  return processor;
}

/// The asynchronous call: starts the run and returns the processor. Throws only when a value is refused; a
/// failure of the run is kept by the processor.
template <class P, class... As>
boost::shared_ptr<P> startCall(const typename As::StorageType&... values) {
  const auto processor = prepareCall<P, As...>(values...);
  processor->run(core::eSynchroType::Asynchronous);
  return processor;
}

/// Waits for an asynchronous run and reads an output; throws the failure of the run when it failed.
template <class A, class P>
typename A::StorageType awaitOutput(const boost::shared_ptr<P>& processor) {
  if (!processor) raiseError(VEXO_HERE, "VEXOProcessing", "getAsyncProcessorOutput: the processor is null");
  processor->wait();
  processor->rethrowFailure();
  return processor->template getStorage<A>();
}

/// The call forms that every filter has: P is its first level, Out its output, In its parameters in the order
/// of the arguments.
template <class P, class Out, class... In>
struct CallForms {
  using Output = typename Out::StorageType;

  /// Runs; returns a new output, or fills the caller's.
  static Output run(const typename In::StorageType&... values) {
    return runCall<P, In...>(values...)->template getStorage<Out>();
  }
  static void fill(const typename In::StorageType&... values, const Output& output) {
    runCall<P, In..., Out>(values..., output);
  }
  /// The same in the background.
  static boost::shared_ptr<P> start(const typename In::StorageType&... values) {
    return startCall<P, In...>(values...);
  }
  static boost::shared_ptr<P> startFill(const typename In::StorageType&... values, const Output& output) {
    return startCall<P, In..., Out>(values..., output);
  }
  static Output await(const boost::shared_ptr<P>& processor) { return awaitOutput<Out>(processor); }
};

}  // namespace vexo::processor
