#include "VEXOCore/ThreadPool.h"

#include <pthread.h>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "VEXOCore/ActionRunner.h"
#include "VEXOCore/Log.h"

namespace vexo::core {
namespace {

/// Threads beyond some for each processor only cost memory.
std::size_t getMostThreads() {
  return std::max<std::size_t>(16, 4 * ActionRunner::getDefaultThreadCount());
}

/// Threads without work that are kept beyond the helpers, for tasks to come.
constexpr std::size_t spareThreads = 4;
/// Looks for new work before a thread goes to sleep: waking it up takes longer than many a loop.
constexpr int looksBeforeSleep = 2000;

void pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#endif
}

/// Of a thread of the pool, or one that runs a task: it cannot wait for its own end.
thread_local bool isWorker = false;

}  // namespace

struct ThreadPool::Loop {
  RunState& run;
  const std::size_t count;
  void (*const piece)(void* context, std::size_t index);
  void* const context;
  const int urgency = static_cast<int>(run.getPriority().getLevel());
  std::atomic<std::size_t> next{0};
  std::atomic<std::size_t> helpers{0};  ///< changed under the lock
  Loop* following = nullptr;

  bool hasPieces() const { return next < count; }
};

std::atomic<ThreadPool*> ThreadPool::_instance{nullptr};

ThreadPool& ThreadPool::getInstance() {
  static ThreadPool& pool = *[] {
    _instance = new ThreadPool;
    // A child has none of the threads, and must not find the lock held by one of them.
    pthread_atfork([] { _instance.load()->_mutex.lock(); }, [] { _instance.load()->_mutex.unlock(); },
                   [] { _instance.load()->forget(); });
    return _instance.load();
  }();
  static const struct AtExit {
    ~AtExit() { getInstance().close(); }
  } atExit;
  return pool;
}

void ThreadPool::insert(Loop& loop) {
  Loop** place = &_loops;
  while (*place && (*place)->urgency >= loop.urgency) place = &(*place)->following;
  loop.following = *place;
  *place = &loop;
  updateUrgency();
}

void ThreadPool::remove(Loop& loop) {
  Loop** place = &_loops;
  while (*place && *place != &loop) place = &(*place)->following;
  if (*place) *place = loop.following;  // a forked child begins without loops
  updateUrgency();
}

void ThreadPool::updateUrgency() {
  if (!_closed) _urgency = _loops ? _loops->urgency : -1;
}

/// The first loop that a thread may join: one that belongs already to the run, or one that is free.
ThreadPool::Loop* ThreadPool::findLoop(const RunState* run) const {
  for (Loop* loop = _loops; loop; loop = loop->following)
    if (loop->hasPieces() &&
        (run ? run == &loop->run : loop->run._helperCount + 1 < loop->run.getThreadCount()))
      return loop;
  return nullptr;
}

void ThreadPool::takePieces(Loop& loop, bool alone) {
  do {
    const std::size_t index = loop.next++;
    if (index >= loop.count) return;
    loop.piece(loop.context, index);
    // A helper leaves for a loop that is more urgent. Where it may not join that one it is back for a piece.
  } while (alone || _urgency <= loop.urgency);
}

void ThreadPool::help(Loop& loop, Lock& lock) {
  ++loop.helpers;
  lock.unlock();
  takePieces(loop, false);
  lock.lock();
  if (--loop.helpers == 0) _helperLeft.notify_all();
}

/// Meanwhile the thread takes pieces of other loops of its run: those that it waits for are among them.
void ThreadPool::awaitHelpers(Loop& loop, Lock& lock) {
  while (loop.helpers != 0) {
    if (Loop* other = findLoop(&loop.run)) {
      help(*other, lock);
      continue;
    }
    const unsigned seen = _arrivals;
    const auto mayGoOn = [&] { return loop.helpers == 0 || _arrivals != seen; };
    lock.unlock();
    for (int look = 0; look < looksBeforeSleep && !mayGoOn(); ++look) pause();
    lock.lock();
    _helperLeft.wait(lock, mayGoOn);
  }
}

void ThreadPool::runLoop(RunState& run, std::size_t count, void (*piece)(void*, std::size_t),
                         void* context) noexcept {
  Loop loop{run, count, piece, context};
  Lock lock(_mutex);
  const bool shared = !_closed;
  if (shared) {
    insert(loop);
    addHelpers(run, count - 1);
    announce();
  }
  lock.unlock();
  takePieces(loop, true);
  if (!shared) return;
  lock.lock();
  remove(loop);
  awaitHelpers(loop, lock);
}

void ThreadPool::addHelpers(const RunState& run, std::size_t wanted) {
  const std::size_t most = std::min(run.getThreadCount(), getMostThreads()) - 1;
  _mostHelpers = std::max(_mostHelpers, most);
  const std::size_t atWork = std::min(run._helperCount, most);
  wanted = std::min(wanted, most - atWork);
  for (std::size_t free = _idle - std::min(_idle, _waiting.size());
       free < wanted && countOtherThreads() < most; ++free)
    if (!addThread()) return;
}

/// False when the system grants no thread, or no memory for one.
bool ThreadPool::addThread() noexcept {
  ThreadList made;
  try {
    const auto self = made.emplace(made.end());
    *self = std::thread([this, self] { work(self); });
  } catch (...) {
    return false;
  }
  _threads.splice(_threads.end(), made);
  return true;
}

/// Tells the threads without work that there is some.
void ThreadPool::announce() {
  ++_arrivals;
  _workCame.notify_all();
  _helperLeft.notify_all();
}

void ThreadPool::sleep(Lock& lock) {
  const unsigned seen = _arrivals;
  ++_idle;
  lock.unlock();
  for (int look = 0; look < looksBeforeSleep && _arrivals == seen; ++look) pause();
  lock.lock();
  _workCame.wait(lock, [&] { return _arrivals != seen; });
  --_idle;
}

void ThreadPool::work(ThreadList::iterator self) {
  isWorker = true;
  Lock lock(_mutex);
  for (;;) {
    if (!_waiting.empty()) {
      runTask(lock);
    } else if (Loop* loop = _closed ? nullptr : findLoop(nullptr)) {
      ++loop->run._helperCount;
      RunState& run = loop->run;
      help(*loop, lock);
      --run._helperCount;
    } else if (_closed || countOtherThreads() > _mostHelpers + spareThreads) {
      break;
    } else {
      sleep(lock);
    }
  }
  // Those that have ended before are joined here, so that no more than one waits for it.
  ThreadList ended;
  ended.swap(_ended);
  _ended.splice(_ended.end(), _threads, self);
  _somethingEnded.notify_all();
  lock.unlock();
  for (std::thread& thread : ended) thread.join();
}

void ThreadPool::start(const boost::shared_ptr<RunState>& run, std::function<void()> task) {
  std::list<Task> one;
  one.push_back({run, std::move(task)});
  ThreadList ended;
  {
    Lock lock(_mutex);
    if (_closed)
      raiseError(VEXO_HERE, "VEXOCore", "no run starts in the background any more: the process is ending");
    ended.swap(_ended);
    if (_idle > _waiting.size() || addThread()) {
      _waiting.splice(_waiting.end(), one);
      announce();
    } else {
      execute(one, lock);
    }
  }
  for (std::thread& thread : ended) thread.join();
}

void ThreadPool::runTask(Lock& lock) {
  std::list<Task> one;
  one.splice(one.end(), _waiting, _waiting.begin());
  ++_taskThreads;
  execute(one, lock);
  --_taskThreads;
}

void ThreadPool::execute(std::list<Task>& one, Lock& lock) {
  const auto task = one.begin();
  _begun.splice(_begun.end(), one);
  lock.unlock();
  const bool wasWorker = std::exchange(isWorker, true);
  task->work();
  task->work = nullptr;  // what the task kept alive ends before the task counts as ended
  isWorker = wasWorker;
  lock.lock();
  _begun.erase(task);
  _somethingEnded.notify_all();
}

void ThreadPool::stopAllTasks() {
  if (ThreadPool* pool = _instance) pool->stopTasks();
}

void ThreadPool::stopTasks() {
  Lock lock(_mutex);
  for (const auto* tasks : {&_waiting, &_begun})
    for (const Task& task : *tasks) task.run->cancel();
  if (isWorker) return;
  _somethingEnded.wait(lock, [this] { return _waiting.empty() && _begun.empty(); });
}

void ThreadPool::close() {
  {
    Lock lock(_mutex);
    _closed = true;
    _urgency = std::numeric_limits<int>::max();  // helpers leave after the piece at hand
    announce();
  }
  stopTasks();
  if (isWorker) return;
  Lock lock(_mutex);
  _somethingEnded.wait(lock, [this] { return _threads.empty(); });
  ThreadList ended;
  ended.swap(_ended);
  lock.unlock();
  for (std::thread& thread : ended) thread.join();
}

/// In a forked child: what belonged to threads that it does not have is left as it is.
void ThreadPool::forget() noexcept {
  new (this) ThreadPool;
}

}  // namespace vexo::core
