#include "VEXOCore/Action.h"

#include <sched.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cmath>
#include <fstream>
#include <sstream>
#include <vector>

#include "VEXOCore/Log.h"
#include "VEXOCore/ThreadPool.h"

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

/// Processors of the affinity mask.
std::size_t countProcessors() {
  for (int most = CPU_SETSIZE; most <= 1 << 20; most *= 2) {
    cpu_set_t* const set = CPU_ALLOC(most);
    if (!set) break;
    const std::size_t size = CPU_ALLOC_SIZE(most);
    const int count = sched_getaffinity(0, size, set) == 0 ? CPU_COUNT_S(size, set) : 0;
    CPU_FREE(set);
    if (count > 0) return static_cast<std::size_t>(count);
  }
  return 1;
}

}  // namespace

ActionRunner& ActionRunner::getInstance() {
  // Never destroyed: runs of other threads may outlive the static objects of the program.
  static auto& runner = *new ActionRunner;
  return runner;
}

std::size_t ActionRunner::getDefaultThreadCount() {
  static const std::size_t count = [] {
    std::size_t threads = countProcessors();
    if (const double granted = controlGroupLimit(); granted > 0)
      threads = std::min(threads, static_cast<std::size_t>(std::max(1.0, std::ceil(granted))));
    return threads;
  }();
  return count;
}

void ActionRunner::setThreadCount(std::size_t count) {
  checkThreadCount(count);
  _threadCount = count != 0 ? count : getDefaultThreadCount();
}

void ActionRunner::run(BaseActionProvider& provider, const RunShare& share) {
  RunState& state = share.state;
  state.throwIfStopped();
  const std::size_t count = provider.prepare();
  if (count == 0) return share.done();
  Pieces pieces{provider, share.part(count)};
  if (count == 1 || state.getThreadCount() == 1)
    for (std::size_t index = 0; index < count; ++index) pieces.run(index);
  else
    ThreadPool::getInstance().runLoop(
        state, count, [](void* context, std::size_t index) { static_cast<Pieces*>(context)->run(index); },
        &pieces);
  state.throwIfStopped();
}

void ActionRunner::start(const boost::shared_ptr<RunState>& state, std::function<void()> task) {
  ThreadPool::getInstance().start(state, std::move(task));
}

void ActionRunner::stopBackgroundRuns() {
  ThreadPool::stopAllTasks();
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
    raise<UnHandleException>("VEXOCore", VEXO_HERE, foreign.what());
  } catch (...) {
    raise<UnHandleException>("VEXOCore", VEXO_HERE, "unknown failure");
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
