#pragma once

#include <atomic>
#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "VEXOCore/BoolResult.h"
#include "VEXOCore/Export.h"

namespace vexo::core {

enum class ePriority { Low, Normal, High };

/// How urgent a run is; worker threads take the pieces of a higher priority first.
class BasePriority {
public:
  BasePriority(ePriority level = ePriority::Normal) : _level(level) {}
  ePriority getLevel() const { return _level; }

private:
  ePriority _level;
};

enum class eSynchroType { Synchronous = 0, Asynchronous = 1 };

/// Everything that the pieces of one run share: whether to go on, the first failure, progress, threads.
class VEXO_API RunState {
public:
  RunState(std::string name, std::size_t threadCount, BasePriority priority)
      : _name(std::move(name)), _threadCount(threadCount), _priority(priority) {}

  /// Asks the run to stop; pieces that have not started will not.
  void cancel() { _cancelled = true; }
  bool isStopped() const { return _cancelled || _failed; }
  /// Keeps the first failure and stops the run.
  void fail(std::exception_ptr failure);
  /// Throws the first failure, or that the run was cancelled; returns when neither happened.
  void throwIfStopped() const;

  void addProgress(double part);
  double getProgress() const { return _progress; }

  std::size_t getThreadCount() const { return _threadCount; }
  BasePriority getPriority() const { return _priority; }

private:
  friend class ThreadPool;

  const std::string _name;
  const std::size_t _threadCount;
  const BasePriority _priority;
  std::atomic<bool> _cancelled{false};
  std::atomic<bool> _failed{false};
  std::atomic<double> _progress{0};
  mutable std::mutex _mutex;
  std::exception_ptr _failure;
  std::size_t _helperCount = 0;  ///< threads of the pool that are at work in the run; the pool's
};

/// The part of a run that a piece of work stands for: its state, and its share of the progress (1 = all of
/// it).
struct RunShare {
  RunState& state;
  double share = 1;

  RunShare part(std::size_t pieceCount) const { return {state, share / static_cast<double>(pieceCount)}; }
  void done() const { state.addProgress(share); }
};

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

/// Something that can be run, once at a time, in the calling thread or in the background.
class VEXO_API BaseAction : public boost::enable_shared_from_this<BaseAction> {
public:
  BaseAction() = default;
  BaseAction(const BaseAction&) = delete;
  BaseAction& operator=(const BaseAction&) = delete;
  virtual ~BaseAction();

  /// Synchronous: runs to the end and answers whether it succeeded. Asynchronous: starts the run, which keeps
  /// the action alive, and answers whether it was started (false when no boost::shared_ptr owns it). An
  /// action that is running is not run again (false). No failure of the run itself is thrown: see getResult
  /// and rethrowFailure.
  BoolResult run(eSynchroType synchro);

  bool isRunning() const;
  /// Waits until the action is not running.
  void wait() const;
  /// Outcome of the last run: true before the first.
  BoolResult getResult() const;
  /// Throws the failure of the last run when it failed.
  void rethrowFailure() const;

  /// Asks the current run to stop. Seen before the next piece starts; the run then fails and says that it was
  /// cancelled.
  void cancel();
  /// From 0 to 1, never falling during a run; 1 once it has succeeded.
  double getProgress() const;

  /// Threads that the next run may use; 0 means those of the process. Throws as ActionRunner::setThreadCount
  /// does when there are too many.
  void setThreadLimit(std::size_t count);
  std::size_t getThreadLimit() const;
  void setPriority(BasePriority priority);
  BasePriority getPriority() const;

protected:
  /// The work; throws when it fails.
  virtual void execute(const RunShare& share) = 0;
  /// The name that messages about a run use.
  virtual std::string getRunName() const = 0;

private:
  std::exception_ptr runNow(const boost::shared_ptr<RunState>& state);
  std::exception_ptr end(std::exception_ptr failure);

  mutable std::mutex _mutex;
  mutable std::condition_variable _ended;
  boost::shared_ptr<RunState> _state;
  std::exception_ptr _failure;
  bool _running = false;
  std::size_t _threadLimit = 0;
  BasePriority _priority;
};

}  // namespace vexo::core
