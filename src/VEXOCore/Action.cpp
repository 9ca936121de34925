#include "VEXOCore/Action.h"

#include <tbb/global_control.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <array>
#include <boost/make_shared.hpp>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>
#include <vector>

#include "VEXOCore/Log.h"
#include "VEXOCore/ParallelFor.h"

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace vexo::core {

namespace {

// The thread sanitizer cannot see how oneTBB, which is not built for it, orders its threads. What the runner
// may rely on is stated to it here: the caller's work before the pieces, and the pieces before the caller
// goes on.
void releaseTo([[maybe_unused]] void* order) {
#ifdef __SANITIZE_THREAD__
  __tsan_release(order);
#endif
}
void acquireFrom([[maybe_unused]] void* order) {
#ifdef __SANITIZE_THREAD__
  __tsan_acquire(order);
#endif
}

}  // namespace

void RunState::fail(std::exception_ptr failure) {
  std::unique_lock<std::mutex> lock(_mutex);
  if (!_failure) _failure = failure;
  _failed = true;
}

void RunState::throwIfStopped() const {
  if (!isStopped()) return;
  {
    std::unique_lock<std::mutex> lock(_mutex);
    if (_failure) std::rethrow_exception(_failure);
  }
  raiseError(VEXO_HERE, "VEXOCore", "the run of ", _name, " was cancelled");
}

void RunState::addProgress(double part) {
  double old = _progress;
  while (!_progress.compare_exchange_weak(old, std::min(1.0, old + part))) {
  }
}

BaseActionProvider::~BaseActionProvider() = default;

namespace {

constexpr std::size_t mostThreads = 4096;

void checkThreadCount(std::size_t count) {
  if (count > mostThreads)
    raiseError(VEXO_HERE, "VEXOCore", "thread count ", count, " is over ", mostThreads);
}

/// CPUs' worth of time that the control group at this folder and those above it grant; 0 when none sets a
/// limit.
double controlGroupLimit(const std::string& folder) {
  double limit = 0;
  for (std::string path = folder;; path.erase(path.rfind('/'))) {
    double quota = 0, period = 0;
    std::ifstream v2("/sys/fs/cgroup" + path + "/cpu.max");
    if (!(v2 >> quota >> period)) {
      std::ifstream("/sys/fs/cgroup/cpu" + path + "/cpu.cfs_quota_us") >> quota;
      std::ifstream("/sys/fs/cgroup/cpu" + path + "/cpu.cfs_period_us") >> period;
    }
    if (quota > 0 && period > 0 && (limit == 0 || quota / period < limit)) limit = quota / period;
    if (path.empty()) return limit;
  }
}

double controlGroupLimit() {
  // Lines "0::/folder" (version 2) or "4:cpu,cpuacct:/folder" (version 1).
  std::ifstream groups("/proc/self/cgroup");
  double limit = 0;
  for (std::string line; std::getline(groups, line);) {
    const auto first = line.find(':'), second = line.find(':', first + 1);
    if (second == std::string::npos) continue;
    const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
    if (controllers != ",," && controllers.find(",cpu,") == std::string::npos) continue;
    std::string folder = line.substr(second + 1);
    if (folder == "/") folder.clear();
    const double found = controlGroupLimit(folder);
    if (found > 0 && (limit == 0 || found < limit)) limit = found;
  }
  return limit;
}

// Addresses that stand for the two points in time; pieces are not ordered among one another.
void* beginOf(void* pieces) {
  return pieces;
}
void* endOf(void* pieces) {
  return static_cast<char*>(pieces) + 1;
}

/// The pieces of a provider, none of which starts once the run is to stop.
struct Pieces {
  BaseActionProvider& provider;
  const RunShare share;

  void run(std::size_t index) const {
    if (share.state.isStopped()) return;
    try {
      provider.runPiece(index, share);
    } catch (...) {
      share.state.fail(std::current_exception());
    }
  }
};

BoolResult resultOf(const std::exception_ptr& failure) {
  if (!failure) return true;
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception& known) {
    return BoolResult::failure(known.what());
  } catch (...) {
    return BoolResult::failure("unknown failure");
  }
}

tbb::task_arena::priority toTbb(ePriority priority) {
  switch (priority) {
    case ePriority::Low:
      return tbb::task_arena::priority::low;
    case ePriority::High:
      return tbb::task_arena::priority::high;
    default:
      return tbb::task_arena::priority::normal;
  }
}

}  // namespace

struct ActionRunner::Impl {
  std::mutex mutex;
  std::condition_variable idle;
  std::size_t threadCount = getDefaultThreadCount();
  /// Lets arenas have more threads than the machine has processors, when a user asks for that.
  std::unique_ptr<tbb::global_control> allowance;
  std::size_t allowed = 0;
  /// One arena per priority, shared by the synchronous runs that do not limit their threads.
  std::array<boost::shared_ptr<tbb::task_arena>, 3> arenas;
  std::map<boost::shared_ptr<RunState>, std::thread> background;
  std::vector<std::thread>
      ended;  ///< background threads that have nothing more to do; the next to end joins them

  boost::shared_ptr<tbb::task_arena> makeArena(std::size_t threads, ePriority priority) {
    if (threads > std::max<std::size_t>(allowed, getDefaultThreadCount())) {
      allowance =
          std::make_unique<tbb::global_control>(tbb::global_control::max_allowed_parallelism, threads);
      allowed = threads;
    }
    return boost::make_shared<tbb::task_arena>(static_cast<int>(threads), 1, toTbb(priority));
  }

  boost::shared_ptr<tbb::task_arena> arenaFor(RunState& state) {
    std::scoped_lock lock(mutex, state._mutex);
    if (!state._arena) {
      const ePriority priority = state.getPriority().getLevel();
      if (state.getThreadCount() == threadCount) {
        auto& shared = arenas[static_cast<std::size_t>(priority)];
        if (!shared) shared = makeArena(threadCount, priority);
        state._arena = shared;
      } else {
        state._arena = makeArena(state.getThreadCount(), priority);
      }
    }
    return boost::static_pointer_cast<tbb::task_arena>(state._arena);
  }
};

ActionRunner& ActionRunner::getInstance() {
  static ActionRunner runner;
  return runner;
}

ActionRunner::ActionRunner() : _impl(std::make_unique<Impl>()) {
  getModuleLogger("VEXOCore");  // what runs need until the destructor has cancelled them must be made before
}

ActionRunner::~ActionRunner() {
  std::unique_lock<std::mutex> lock(_impl->mutex);
  for (const auto& run : _impl->background) run.first->cancel();
  _impl->idle.wait(lock, [this] { return _impl->background.empty(); });
  lock.unlock();
  for (std::thread& thread : _impl->ended) thread.join();
}

std::size_t ActionRunner::getDefaultThreadCount() {
  static const std::size_t count = [] {
    // oneTBB counts the processors of the affinity mask; the control group's share of time it does not know.
    std::size_t threads = static_cast<std::size_t>(std::max(1, tbb::info::default_concurrency()));
    if (const double granted = controlGroupLimit(); granted > 0)
      threads = std::min(threads, static_cast<std::size_t>(std::max(1.0, std::ceil(granted))));
    return threads;
  }();
  return count;
}

void ActionRunner::setThreadCount(std::size_t count) {
  checkThreadCount(count);
  std::unique_lock<std::mutex> lock(_impl->mutex);
  _impl->threadCount = count != 0 ? count : getDefaultThreadCount();
  for (auto& arena : _impl->arenas) arena.reset();
}

std::size_t ActionRunner::getThreadCount() const {
  std::unique_lock<std::mutex> lock(_impl->mutex);
  return _impl->threadCount;
}

void ActionRunner::run(BaseActionProvider& provider, const RunShare& share) {
  RunState& state = share.state;
  state.throwIfStopped();
  const std::size_t count = provider.prepare();
  if (count == 0) return share.done();
  Pieces pieces{provider, share.part(count)};
  if (count == 1 || state.getThreadCount() == 1) {
    for (std::size_t index = 0; index < count; ++index) pieces.run(index);
  } else {
    // Inside a worker of the same arena this executes in place, so nested providers share its threads.
    const auto arena = _impl->arenaFor(state);
    releaseTo(beginOf(&pieces));
    parallelFor(
        *arena, count,
        [](void* context, std::size_t index) {
          acquireFrom(beginOf(context));
          static_cast<Pieces*>(context)->run(index);
          releaseTo(endOf(context));
        },
        &pieces);
    acquireFrom(endOf(&pieces));
  }
  state.throwIfStopped();
}

void ActionRunner::start(const boost::shared_ptr<RunState>& state, std::function<void()> task) {
  // A thread and an arena of its own: it shares the pieces with the workers as the caller of a synchronous
  // run does, and goes on even while every thread of the process waits for it.
  const auto work = [this](const boost::shared_ptr<RunState>& run, std::function<void()>& toDo) {
    toDo();
    toDo = nullptr;  // what the task kept alive ends before the run counts as ended
    std::vector<std::thread> ended;
    {
      std::unique_lock<std::mutex> lock(_impl->mutex);
      ended.swap(_impl->ended);
      const auto own = _impl->background.find(run);
      _impl->ended.push_back(std::move(own->second));
      _impl->background.erase(own);
      _impl->idle.notify_all();
    }
    for (std::thread& thread : ended) thread.join();
  };
  // The thread cannot end before it is known, as it needs the mutex for that.
  std::unique_lock<std::mutex> lock(_impl->mutex);
  state->_arena = _impl->makeArena(state->getThreadCount(), state->getPriority().getLevel());
  _impl->background.emplace(state, std::thread([=]() mutable { work(state, task); }));
}

BaseAction::~BaseAction() = default;

BoolResult BaseAction::run(eSynchroType synchro) {
  const std::string name = getRunName();
  const boost::shared_ptr<BaseAction> self = weak_from_this().lock();
  if (synchro == eSynchroType::Asynchronous && !self)
    return BoolResult::failure(name + " cannot run in the background: no boost::shared_ptr owns it");
  const std::size_t processThreads = ActionRunner::getInstance().getThreadCount();
  boost::shared_ptr<RunState> state;
  {
    std::unique_lock<std::mutex> lock(_mutex);
    if (_running) return BoolResult::failure(name + " is already running");
    _state = state =
        boost::make_shared<RunState>(name, _threadLimit ? _threadLimit : processThreads, _priority);
    _failure = nullptr;
    _running = true;
  }
  // The answer is that of this run: another thread may begin the next one at once.
  if (synchro == eSynchroType::Synchronous) return resultOf(runNow(state));
  try {
    // The task holds the action, so that a dropped handle does not end the run.
    ActionRunner::getInstance().start(state, [self, state] { self->runNow(state); });
    return true;
  } catch (...) {
    return resultOf(end(std::current_exception()));
  }
}

std::exception_ptr BaseAction::runNow(const boost::shared_ptr<RunState>& state) {
  std::exception_ptr failure;
  try {
    // Work that has come to its end succeeded, though somebody may have cancelled it just then.
    execute(RunShare{*state});
    state->addProgress(1);
  } catch (...) {
    failure = std::current_exception();
  }
  return end(failure);
}

std::exception_ptr BaseAction::end(std::exception_ptr failure) {
  std::unique_lock<std::mutex> lock(_mutex);
  _failure = failure;
  _running = false;
  _ended.notify_all();
  return failure;
}

bool BaseAction::isRunning() const {
  std::unique_lock<std::mutex> lock(_mutex);
  return _running;
}

void BaseAction::wait() const {
  std::unique_lock<std::mutex> lock(_mutex);
  while (_running) _ended.wait(lock);
}

BoolResult BaseAction::getResult() const {
  std::unique_lock<std::mutex> lock(_mutex);
  return resultOf(_failure);
}

void BaseAction::rethrowFailure() const {
  std::exception_ptr failure;
  {
    std::unique_lock<std::mutex> lock(_mutex);
    failure = _failure;
  }
  if (!failure) return;
  try {
    std::rethrow_exception(failure);
  } catch (const BaseException&) {
    throw;
  } catch (const std::exception& foreign) {
    raise<UnHandleException>(getModuleLogger("VEXOCore"), VEXO_HERE, foreign.what());
  } catch (...) {
    raise<UnHandleException>(getModuleLogger("VEXOCore"), VEXO_HERE, "unknown failure");
  }
}

void BaseAction::cancel() {
  std::unique_lock<std::mutex> lock(_mutex);
  if (_running) _state->cancel();
}

double BaseAction::getProgress() const {
  std::unique_lock<std::mutex> lock(_mutex);
  return _state ? _state->getProgress() : 0;
}

void BaseAction::setThreadLimit(std::size_t count) {
  checkThreadCount(count);
  std::unique_lock<std::mutex> lock(_mutex);
  _threadLimit = count;
}

std::size_t BaseAction::getThreadLimit() const {
  std::unique_lock<std::mutex> lock(_mutex);
  return _threadLimit;
}

void BaseAction::setPriority(BasePriority priority) {
  std::unique_lock<std::mutex> lock(_mutex);
  _priority = priority;
}

BasePriority BaseAction::getPriority() const {
  std::unique_lock<std::mutex> lock(_mutex);
  return _priority;
}

}  // namespace vexo::core
