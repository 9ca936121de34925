#include "VEXOCore/Action.h"

#include <boost/make_shared.hpp>
#include <new>

#include "VEXOCore/Log.h"
#include "VEXOCore/ThreadGrants.h"

namespace vexo::core {
namespace {

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

}  // namespace

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

bool BaseAction::waitFor(std::chrono::nanoseconds duration) const {
  const auto end = std::chrono::steady_clock::now() + duration;
  std::unique_lock<std::mutex> lock(_mutex);
  return _ended.wait_until(lock, end, [this] { return !_running; });
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
  } catch (const std::bad_alloc&) {
    raiseWith<OutOfMemoryException>(std::size_t(0), "VEXOCore", VEXO_HERE, getRunName() + ": out of memory");
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
