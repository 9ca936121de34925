#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <string>
#include <utility>

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

/// Everything that the pieces of one run share: whether to go on, the first failure, progress, threads.
class VEXO_API RunState {
public:
  RunState(std::string name, std::size_t threadCount, BasePriority priority)
      : _name(std::move(name)), _threadCount(threadCount), _priority(priority) {}

  /// Asks the run to stop; pieces that have not started will not.
  void cancel() { _stopped = 1; }
  bool isStopped() const { return _stopped != 0; }
  /// The same as plain data, for kernels: not 0 once the run is to end.
  const unsigned char* getStopFlag() const { return reinterpret_cast<const unsigned char*>(&_stopped); }
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
  std::atomic<unsigned char> _stopped{0};
  static_assert(sizeof _stopped == 1 && std::atomic<unsigned char>::is_always_lock_free);
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

}  // namespace vexo::core
