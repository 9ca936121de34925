#include "VEXOCore/Action.h"

#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <array>
#include <boost/make_shared.hpp>
#include <cmath>
#include <fstream>
#include <set>
#include <sstream>

#include "VEXOCore/Log.h"

namespace vexo::core {

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

/// CPUs' worth of time that the control group at this folder and those above it grant; 0 when none sets a limit.
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
  /// One arena per priority, shared by all runs that do not limit their threads.
  std::array<boost::shared_ptr<tbb::task_arena>, 3> arenas;
  std::set<boost::shared_ptr<RunState>> background;

  boost::shared_ptr<tbb::task_arena> makeArena(std::size_t threads, ePriority priority) {
    if (threads > std::max<std::size_t>(allowed, getDefaultThreadCount())) {
      allowance = std::make_unique<tbb::global_control>(tbb::global_control::max_allowed_parallelism, threads);
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

ActionRunner::ActionRunner() : _impl(std::make_unique<Impl>()) {}

ActionRunner::~ActionRunner() {
  std::unique_lock<std::mutex> lock(_impl->mutex);
  for (const auto& state : _impl->background) state->cancel();
  _impl->idle.wait(lock, [this] { return _impl->background.empty(); });
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
  constexpr std::size_t most = 4096;
  if (count > most) raiseError(VEXO_HERE, "VEXOCore", "thread count ", count, " is over ", most);
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
  const RunShare part = share.part(count);
  const auto runPiece = [&](std::size_t index) {
    if (state.isStopped()) return;
    try {
      provider.runPiece(index, part);
    } catch (...) {
      state.fail(std::current_exception());
    }
  };
  if (count == 1 || state.getThreadCount() == 1) {
    for (std::size_t index = 0; index < count; ++index) runPiece(index);
  } else {
    // Inside a worker of the same arena this executes in place, so nested providers share its threads.
    const auto arena = _impl->arenaFor(state);
    arena->execute([&] { tbb::parallel_for(std::size_t(0), count, runPiece, tbb::simple_partitioner()); });
  }
  state.throwIfStopped();
}

void ActionRunner::start(const boost::shared_ptr<RunState>& state, std::function<void()> task) {
  const auto arena = _impl->arenaFor(*state);
  {
    std::unique_lock<std::mutex> lock(_impl->mutex);
    _impl->background.insert(state);
  }
  const auto held = std::make_shared<std::function<void()>>(std::move(task));
  arena->enqueue([this, state, held] {
    (*held)();
    *held = nullptr;  // what the task kept alive ends before the run counts as ended
    std::unique_lock<std::mutex> lock(_impl->mutex);
    _impl->background.erase(state);
    if (_impl->background.empty()) _impl->idle.notify_all();
  });
}

BaseAction::~BaseAction() = default;

BoolResult BaseAction::run(eSynchroType synchro) {
  boost::shared_ptr<RunState> state;
  {
    std::unique_lock<std::mutex> lock(_mutex);
    if (_running) return BoolResult::failure(getRunName() + " is already running");
    _running = true;
    _failure = nullptr;
    const std::size_t threads = _threadLimit ? _threadLimit : ActionRunner::getInstance().getThreadCount();
    _state = state = boost::make_shared<RunState>(getRunName(), threads, _priority);
  }
  if (synchro == eSynchroType::Synchronous) {
    runNow(state);
    return getResult();
  }
  // The task holds the action, so that a dropped handle does not end the run.
  ActionRunner::getInstance().start(state, [self = shared_from_this(), state] { self->runNow(state); });
  return true;
}

void BaseAction::runNow(const boost::shared_ptr<RunState>& state) {
  std::exception_ptr failure;
  try {
    execute(RunShare{*state});
    state->throwIfStopped();
    state->addProgress(1);
  } catch (...) {
    failure = std::current_exception();
  }
  std::unique_lock<std::mutex> lock(_mutex);
  _failure = failure;
  _running = false;
  _ended.notify_all();
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
  if (!_failure) return true;
  try {
    std::rethrow_exception(_failure);
  } catch (const std::exception& failure) {
    return BoolResult::failure(failure.what());
  } catch (...) {
    return BoolResult::failure("unknown failure");
  }
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
