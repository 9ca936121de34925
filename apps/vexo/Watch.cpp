#include "Watch.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

namespace vexo::app {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

volatile std::sig_atomic_t endingSignal = 0;
std::atomic<bool> cancelled{false};

void askForCancel(int signal) {
  endingSignal = signal;
  cancelled = true;
}

/// A line on standard error that appears when the run takes long and goes away with this object.
class ProgressBar {
public:
  explicit ProgressBar(bool enabled) : _enabled(enabled) {}
  ~ProgressBar() {
    if (_shown >= 0) std::fputs("\r\033[K", stderr);
  }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void update(double progress) {
    const int percent = static_cast<int>(progress * 100);
    if (!_enabled || percent == _shown || Clock::now() - _start < milliseconds(500)) return;
    constexpr int width = 40;
    const auto full = static_cast<std::size_t>(percent * width / 100);
    const std::string bar = std::string(full, '#') + std::string(width - full, '.');
    std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), percent);
    std::fflush(stderr);
    _shown = percent;
  }

private:
  const bool _enabled;
  const Clock::time_point _start = Clock::now();
  int _shown = -1;
};

}  // namespace

Interrupted::Interrupted(int signal)
    : std::runtime_error(std::string("cancelled by ") + strsignal(signal)), _signal(signal) {}

void watchSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    // A signal that the caller had ignored stays ignored.
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = askForCancel;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    sigaction(signal, &action, nullptr);
  }
}

const std::atomic<bool>& getCancelFlag() {
  return cancelled;
}

void throwIfCancelled() {
  if (endingSignal) throw Interrupted(endingSignal);
}

void runWatched(const boost::shared_ptr<processor::BaseProcessor>& processor, bool showProgress) {
  ProgressBar bar(showProgress && isatty(STDERR_FILENO));
  if (const BoolResult started = processor->run(core::eSynchroType::Asynchronous); !started)
    throw std::runtime_error(started.getMessage());
  while (!processor->waitFor(milliseconds(50))) {
    if (endingSignal) processor->cancel();
    bar.update(processor->getProgress());
  }
  throwIfCancelled();
  processor->rethrowFailure();
}

}  // namespace vexo::app
