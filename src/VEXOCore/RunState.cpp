#include "VEXOCore/RunState.h"

#include <algorithm>
#include <utility>

#include "VEXOCore/Log.h"

namespace vexo::core {

void RunState::fail(std::exception_ptr failure) {
  std::unique_lock<std::mutex> lock(_mutex);
  if (!_failure) _failure = std::move(failure);
  _stopped = 1;
}

void RunState::throwIfStopped() const {
  if (!isStopped()) return;
  {
    std::unique_lock<std::mutex> lock(_mutex);
    if (_failure) std::rethrow_exception(_failure);
  }
  raise<CancelledException>("VEXOCore", VEXO_HERE, "the run of " + _name + " was cancelled");
}

void RunState::addProgress(double part) {
  double old = _progress;
  while (!_progress.compare_exchange_weak(old, std::min(1.0, old + part))) {
  }
}

}  // namespace vexo::core
