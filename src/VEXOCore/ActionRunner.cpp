#include "VEXOCore/ActionRunner.h"

#include <utility>

#include "VEXOCore/ThreadGrants.h"
#include "VEXOCore/ThreadPool.h"

namespace vexo::core {
namespace {

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

}  // namespace

BaseActionProvider::~BaseActionProvider() = default;

ActionRunner& ActionRunner::getInstance() {
  // Never destroyed: runs of other threads may outlive the static objects of the program.
  static auto& runner = *new ActionRunner;
  return runner;
}

std::size_t ActionRunner::getDefaultThreadCount() {
  static const std::size_t count = countGrantedThreads();
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

}  // namespace vexo::core
