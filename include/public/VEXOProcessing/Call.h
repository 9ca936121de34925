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

/// Several outputs of a filter: the members of the structure Result, in their order. Optional ones are
/// requested when the caller gives none.
template <class Result, class... Outs>
struct Outputs {
  using Type = Result;
  template <class P>
  static void request(P& processor) {
    (requestOptional(processor, *processor.template accessAttribute<Outs>()), ...);
  }
  template <class P>
  static Result read(const P& processor) {
    return {processor.template getStorage<Outs>()...};
  }

private:
  static void requestOptional(BaseProcessor& processor, const BaseAttribute& output) {
    if (output.isOptional() && !output.isInput()) processor.requestOutput(output);
  }
};

/// The call forms that every filter has: P is its first level, Out its output, In its parameters in the order
/// of the arguments. With Outputs in place of Out the filter returns a structure, and fills several images.
template <class P, class Out, class... In>
struct CallForms;

template <class P, class Result, class... Outs, class... In>
struct CallForms<P, Outputs<Result, Outs...>, In...> {
  using Output = Result;

  /// Runs; returns new outputs, or fills the caller's. Throws on any failure.
  static Output run(const typename In::StorageType&... values) {
    const auto processor = prepare(values...);
    executeSyncRun(processor);
    return Outputs<Result, Outs...>::read(*processor);
  }
  static void fill(const typename In::StorageType&... values, const typename Outs::StorageType&... outputs) {
    executeSyncRun(prepareCall<P, In..., Outs...>(values..., outputs...));
  }

  /// The same in the background. Throws only when a value is refused; a failure of the run is kept by the
  /// processor.
  static boost::shared_ptr<P> start(const typename In::StorageType&... values) {
    return launch(prepare(values...));
  }
  static boost::shared_ptr<P> startFill(const typename In::StorageType&... values,
                                        const typename Outs::StorageType&... outputs) {
    return launch(prepareCall<P, In..., Outs...>(values..., outputs...));
  }

  /// Waits for a run in the background and reads its outputs; throws the failure of the run when it failed.
  static Output await(const boost::shared_ptr<P>& processor) {
    return Outputs<Result, Outs...>::read(static_cast<const P&>(awaitRun(processor.get())));
  }

private:
  static boost::shared_ptr<P> prepare(const typename In::StorageType&... values) {
    const auto processor = prepareCall<P, In...>(values...);
    Outputs<Result, Outs...>::request(*processor);
    return processor;
  }
  static boost::shared_ptr<P> launch(const boost::shared_ptr<P>& processor) {
    processor->run(core::eSynchroType::Asynchronous);
    return processor;
  }
};

template <class P, class Out, class... In>
struct CallForms : CallForms<P, Outputs<typename Out::StorageType, Out>, In...> {};

}  // namespace vexo::processor
