#pragma once

#include <boost/shared_ptr.hpp>

#include "VEXOProcessing/Processor.h"

namespace vexo::app {

/// From now on the first Ctrl-C, or SIGTERM, asks for the end of the run; a second one ends the program at
/// once.
void watchSignals();
/// Throws when the end of the run was asked for.
void throwIfCancelled();

/// Runs to the end; throws what made the run fail. Shows the progress of a long run on standard error.
void runWatched(const boost::shared_ptr<processor::BaseProcessor>& processor, bool showProgress);

}  // namespace vexo::app
