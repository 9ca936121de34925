#pragma once

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <string>

#include "VEXOCore/ActionRunner.h"
#include "VEXOCore/BoolResult.h"
#include "VEXOCore/Export.h"
#include "VEXOCore/RunState.h"

namespace vexo::core {

enum class eSynchroType { Synchronous = 0, Asynchronous = 1 };

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
  /// Waits for so long at most; whether the action is not running any more.
  bool waitFor(std::chrono::nanoseconds duration) const;
  /// Outcome of the last run: true before the first.
  BoolResult getResult() const;
  /// Throws the failure of the last run when it failed.
  void rethrowFailure() const;

  /// Asks the current run to stop. Seen before the next piece starts, and by kernels once a line or a few;
  /// the run then fails with a CancelledException.
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
