#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <functional>

#include "VEXOCore/RunState.h"

namespace vexo::core {

/// Work that is cut into pieces which may run at once.
class VEXO_API BaseActionProvider {
public:
  virtual ~BaseActionProvider();
  /// Called once before the pieces: cuts the work and says how many pieces there are.
  virtual std::size_t prepare() = 0;
  /// Runs one piece; throws when it fails. Called by several threads at once.
  virtual void runPiece(std::size_t pieceIndex, const RunShare& share) = 0;
};

using ProviderPtr = boost::shared_ptr<BaseActionProvider>;

/// Runs the pieces of providers on the worker threads of the process.
///
/// Threads are started by the first run that can use more than one, never when the library is loaded. By
/// default there are as many as the affinity mask and the control group of the process grant. Where the
/// system grants no thread, the caller's does all the work.
///
/// When the process ends, or a library of filters is unloaded, runs in the background are cancelled and
/// waited for; none starts any more once the process is ending.
class VEXO_API ActionRunner {
public:
  static ActionRunner& getInstance();
  ActionRunner(const ActionRunner&) = delete;
  ActionRunner& operator=(const ActionRunner&) = delete;

  /// Number of threads that a run may use, the calling one included; 0 restores the default. Applies to runs
  /// that start later. A run has no more threads than pieces of work, nor than four for each processor (16
  /// where that is less).
  void setThreadCount(std::size_t count);
  std::size_t getThreadCount() const { return _threadCount; }
  static std::size_t getDefaultThreadCount();

  /// Runs all pieces and returns when the last has ended; throws the first failure.
  void run(BaseActionProvider& provider, const RunShare& share);
  /// Runs `task`, the whole of the run with that state, which throws nothing, on a thread of its own; on the
  /// calling one where no thread can be had. Throws when the process is ending.
  void start(const boost::shared_ptr<RunState>& state, std::function<void()> task);
  /// Cancels all runs in the background and waits for them; from within a run without waiting.
  static void stopBackgroundRuns();

private:
  ActionRunner() = default;

  std::atomic<std::size_t> _threadCount{getDefaultThreadCount()};
};

}  // namespace vexo::core
