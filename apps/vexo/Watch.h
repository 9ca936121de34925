#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <stdexcept>

#include "VEXOProcessing/Processor.h"

namespace vexo::app {

/// A signal asked for the end of the run.
class Interrupted : public std::runtime_error {
public:
  explicit Interrupted(int signal);
  int getSignal() const { return _signal; }

private:
  int _signal;
};

/// From now on the first SIGINT (Ctrl-C), SIGTERM or SIGHUP asks for the end of the run; a second one ends
/// the program at once.
void watchSignals();
/// Becomes true then.
const std::atomic<bool>& getCancelFlag();
/// Throws Interrupted when the end of the run was asked for.
void throwIfCancelled();

/// Runs to the end; throws what made the run fail. Shows the progress of a long run on standard error.
void runWatched(const boost::shared_ptr<processor::BaseProcessor>& processor, bool showProgress);

}  // namespace vexo::app
