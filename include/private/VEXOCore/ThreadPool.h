#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

#include "VEXOCore/RunState.h"

namespace vexo::core {

/// The worker threads of the process. They take pieces of loops, which other threads wait for, and whole runs
/// in the background.
///
/// Written here because a host must live on when memory or threads run out: a loop allocates nothing (its
/// entry lies on the stack of the thread that runs it), a thread that cannot be made is done without, and a
/// process that was forked begins with an empty pool.
class ThreadPool {
public:
  /// Never destroyed: runs of other threads may outlive the static objects of the program.
  static ThreadPool& getInstance();

  /// Calls piece(context, i) for each i below `count`, on this thread and on others, as many as the run may
  /// have; returns when all calls have returned. `piece` does not throw.
  void runLoop(RunState& run, std::size_t count, void (*piece)(void* context, std::size_t index),
               void* context) noexcept;

  /// Runs the task on a thread that has nothing else to do, or on this one where no thread can be had.
  /// Throws when the process is ending.
  void start(const boost::shared_ptr<RunState>& run, std::function<void()> task);
  /// Cancels the tasks under way and waits for them; from a thread of the pool without waiting. Makes no pool
  /// where there is none.
  static void stopAllTasks();
  /// The same, once and for all: no task starts any more, loops run on their callers' threads alone.
  void close();

private:
  struct Loop;
  struct Task {
    boost::shared_ptr<RunState> run;
    std::function<void()> work;
  };
  using Lock = std::unique_lock<std::mutex>;
  using ThreadList = std::list<std::thread>;

  ThreadPool() = default;
  void stopTasks();
  void insert(Loop& loop);
  void remove(Loop& loop);
  void updateUrgency();
  Loop* findLoop(const RunState* run) const;
  void takePieces(Loop& loop, bool alone);
  void help(Loop& loop, Lock& lock);
  void awaitHelpers(Loop& loop, Lock& lock);
  void addHelpers(const RunState& run, std::size_t wanted);
  bool addThread() noexcept;
  std::size_t countOtherThreads() const { return _threads.size() - _taskThreads - _waiting.size(); }
  void work(ThreadList::iterator self);
  void runTask(Lock& lock);
  void execute(std::list<Task>& one, Lock& lock);
  void announce();
  void sleep(Lock& lock);
  void forget() noexcept;

  static std::atomic<ThreadPool*> _instance;

  std::mutex _mutex;
  std::condition_variable _workCame, _helperLeft, _somethingEnded;
  std::atomic<unsigned> _arrivals{0};  ///< of work that a sleeping thread may take
  Loop* _loops = nullptr;              ///< the most urgent first, then the oldest
  std::atomic<int> _urgency{-1};       ///< of the first loop
  std::list<Task> _waiting, _begun;    ///< a thread is sure to come for each that waits
  ThreadList _threads, _ended;         ///< those that have ended are still to be joined
  std::size_t _idle = 0;
  std::size_t _taskThreads = 0;
  std::size_t _mostHelpers = 0;  ///< that a run has asked for
  bool _closed = false;
};

}  // namespace vexo::core
