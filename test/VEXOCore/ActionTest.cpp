#include "VEXOCore/Action.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <filesystem>
#include <future>
#include <stdexcept>
#include <tuple>
#include <vector>

#include "tools/Calls.h"

namespace {

using namespace vexo;
using namespace vexo::core;
using test::eventually;

/// Counts how often each of its pieces runs, and how many run at once.
class Pieces : public BaseActionProvider {
public:
  using Body = std::function<void(std::size_t, const RunShare&)>;
  explicit Pieces(
      std::size_t count, Body body = [](std::size_t, const RunShare& share) { share.done(); })
      : runs(count), _body(std::move(body)) {}

  std::size_t prepare() override {
    ++prepared;
    return runs.size();
  }
  void runPiece(std::size_t index, const RunShare& share) override {
    const int now = ++_active;
    for (int most = mostAtOnce; now > most && !mostAtOnce.compare_exchange_weak(most, now);) {
    }
    ++runs[index];
    ++started;
    const boost::shared_ptr<void> atEnd(nullptr, [this](void*) { --_active; });
    _body(index, share);
  }
  bool eachRanOnce() const {
    for (const auto& count : runs)
      if (count != 1) return false;
    return prepared == 1;
  }

  std::vector<std::atomic<int>> runs;
  std::atomic<int> prepared{0}, started{0}, mostAtOnce{0};

private:
  Body _body;
  std::atomic<int> _active{0};
};

class Job : public BaseAction {
public:
  explicit Job(std::function<void(const RunShare&)> work) : _work(std::move(work)) {}

protected:
  void execute(const RunShare& share) override { _work(share); }
  std::string getRunName() const override { return "the job"; }

private:
  std::function<void(const RunShare&)> _work;
};

boost::shared_ptr<Job> jobOf(BaseActionProvider& provider) {
  return boost::make_shared<Job>(
      [&provider](const RunShare& share) { ActionRunner::getInstance().run(provider, share); });
}

class ActionRun : public testing::TestWithParam<std::tuple<std::size_t, eSynchroType>> {
protected:
  std::size_t threads() const { return std::get<0>(GetParam()); }
  BoolResult runToEnd(BaseAction& action) const {
    action.setThreadLimit(threads());
    const BoolResult begun = action.run(std::get<1>(GetParam()));
    if (std::get<1>(GetParam()) == eSynchroType::Synchronous) return begun;
    EXPECT_TRUE(begun) << begun.getMessage();
    action.wait();
    return action.getResult();
  }
};
INSTANTIATE_TEST_SUITE_P(Threads, ActionRun,
                         testing::Combine(testing::Values(1, 2, 3, 7),
                                          testing::Values(eSynchroType::Synchronous,
                                                          eSynchroType::Asynchronous)));

TEST_P(ActionRun, EveryPieceRunsOnce) {
  for (const std::size_t count : {0, 1, 2, 3, 1000}) {
    const auto caller = std::this_thread::get_id();
    const bool alone = threads() == 1 && std::get<1>(GetParam()) == eSynchroType::Synchronous;
    Pieces pieces(count, [&](std::size_t, const RunShare& share) {
      EXPECT_TRUE(!alone || std::this_thread::get_id() == caller);
      share.done();
    });
    const auto job = jobOf(pieces);
    for (const ePriority priority : {ePriority::Low, ePriority::Normal, ePriority::High}) {
      job->setPriority(priority);
      const BoolResult result = runToEnd(*job);
      ASSERT_TRUE(result) << result.getMessage();
      EXPECT_EQ(job->getProgress(), 1);
    }
    for (const auto& runs : pieces.runs) EXPECT_EQ(runs, 3);
    EXPECT_EQ(pieces.prepared, 3);
    EXPECT_LE(pieces.mostAtOnce, static_cast<int>(threads()));
  }
}

TEST_P(ActionRun, TheFirstFailureEndsTheRunAndIsReported) {
  std::atomic<int> place{0};
  Pieces pieces(1000, [&](std::size_t, const RunShare& share) {
    if (place++ == 0) {
      eventually([&] { return place == static_cast<int>(threads()); });
      throw std::runtime_error("first");
    }
    eventually([&] { return share.state.isStopped(); });
    throw std::runtime_error("late");
  });
  Pieces outer(1, [&](auto, const RunShare& share) { ActionRunner::getInstance().run(pieces, share); });
  const auto job = jobOf(outer);
  EXPECT_EQ(runToEnd(*job).getMessage(), "first");
  EXPECT_LE(pieces.started, static_cast<int>(threads()));
  EXPECT_LT(job->getProgress(), 1);
  EXPECT_EQ(test::failureOf<UnHandleException>([&] { job->rethrowFailure(); }), "first");
}

TEST_P(ActionRun, CancellingKeepsFurtherPiecesFromStarting) {
  BaseAction* running = nullptr;
  bool cancels = true;
  Pieces pieces(1000, [&](std::size_t, const RunShare& share) {
    if (cancels) running->cancel();
    share.done();
  });
  const auto job = jobOf(pieces);
  running = job.get();
  EXPECT_TRUE(test::has(runToEnd(*job).getMessage(), "the job was cancelled"));
  EXPECT_LE(pieces.started, static_cast<int>(threads()));
  EXPECT_THROW(job->rethrowFailure(), BaseException);
  // Neither that run nor a cancel between runs affects the next run.
  job->cancel();
  cancels = false;
  EXPECT_EQ(runToEnd(*job).getMessage(), "");
  EXPECT_NO_THROW(job->rethrowFailure());
}

TEST_P(ActionRun, NestedPiecesRunOnceOnTheSameThreadsAndProgressNeverFalls) {
  std::vector<std::unique_ptr<Pieces>> inner;
  for (std::size_t i = 0; i < 40; ++i) inner.push_back(std::make_unique<Pieces>(i));
  Pieces outer(inner.size(), [&](std::size_t index, const RunShare& share) {
    ActionRunner::getInstance().run(*inner[index], share);
  });
  const auto job = jobOf(outer);
  std::atomic<bool> ended{false};
  auto watcher = std::async(std::launch::async, [&] {
    double last = 0;
    while (!ended) {
      const double now = job->getProgress();
      if (now < last || now > 1) return false;
      last = now;
    }
    return true;
  });
  EXPECT_TRUE(runToEnd(*job));
  ended = true;
  EXPECT_TRUE(watcher.get());
  EXPECT_EQ(job->getProgress(), 1);
  EXPECT_TRUE(outer.eachRanOnce());
  for (const auto& pieces : inner) {
    EXPECT_TRUE(pieces->eachRanOnce());
    EXPECT_LE(pieces->mostAtOnce, static_cast<int>(threads()));
  }
}

TEST_P(ActionRun, AnythingThrownIsAFailure) {
  const auto own = boost::make_shared<Job>([](auto&) { throw BaseException("own", VEXO_HERE); });
  EXPECT_EQ(runToEnd(*own).getMessage(), "own");
  EXPECT_THROW(own->rethrowFailure(), BaseException);
  const auto foreign = boost::make_shared<Job>([](auto&) { throw 5; });
  EXPECT_FALSE(runToEnd(*foreign));
  EXPECT_THROW(foreign->rethrowFailure(), UnHandleException);
}

TEST_P(ActionRun, ARunningActionIsNotRunAgain) {
  Job* running = nullptr;
  BoolResult again[2];
  const auto job = boost::make_shared<Job>([&](const RunShare&) {
    EXPECT_TRUE(running->isRunning());
    again[0] = running->run(eSynchroType::Synchronous);
    again[1] = running->run(eSynchroType::Asynchronous);
  });
  running = job.get();
  EXPECT_TRUE(runToEnd(*job));
  for (const BoolResult& result : again) EXPECT_TRUE(!result && test::has(result.getMessage(), "the job"));
  EXPECT_FALSE(job->isRunning());
}

TEST_P(ActionRun, AllThreadsTakePart) {
  std::atomic<std::size_t> arrived{0};
  Pieces pieces(threads(), [&](std::size_t, const RunShare& share) {
    ++arrived;
    if (eventually([&] { return arrived == threads(); })) share.done();
  });
  const auto job = jobOf(pieces);
  EXPECT_TRUE(runToEnd(*job));
  EXPECT_EQ(pieces.mostAtOnce, static_cast<int>(threads()));
}

TEST_P(ActionRun, PiecesMayWaitForRunsOfTheirOwn) {
  Pieces inner(20);
  Pieces outer(20, [&](std::size_t, const RunShare&) {
    const auto job = jobOf(inner);
    job->setThreadLimit(threads());
    EXPECT_TRUE(job->run(eSynchroType::Asynchronous));
    job->wait();
  });
  EXPECT_TRUE(runToEnd(*jobOf(outer)));
  EXPECT_EQ(inner.started, 400);
}

class BackgroundRun : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Threads, BackgroundRun, testing::Values(1, 2, 7));

TEST_P(BackgroundRun, EndsAlthoughItsHandleWasDropped) {
  std::promise<void> dropped;
  std::promise<std::thread::id> worker;
  auto job = boost::make_shared<Job>([&](const RunShare&) {
    dropped.get_future().wait();
    worker.set_value(std::this_thread::get_id());
  });
  job->setThreadLimit(GetParam());
  ASSERT_TRUE(job->run(eSynchroType::Asynchronous));
  const boost::weak_ptr<Job> watched = job;
  job.reset();
  dropped.set_value();
  EXPECT_NE(worker.get_future().get(), std::this_thread::get_id());
  EXPECT_TRUE(eventually([&] { return watched.expired(); }));
}

TEST_P(BackgroundRun, ManyThreadsStartRunsAtOnce) {
  std::atomic<int> succeeded{0};
  std::vector<std::thread> starters;
  for (int i = 0; i < 8; ++i)
    starters.emplace_back([&] {
      std::vector<std::unique_ptr<Pieces>> pieces;
      std::vector<boost::shared_ptr<Job>> jobs;
      for (int k = 0; k < 20; ++k) {
        pieces.push_back(std::make_unique<Pieces>(50));
        jobs.push_back(jobOf(*pieces.back()));
        jobs.back()->setThreadLimit(GetParam());
        jobs.back()->run(eSynchroType::Asynchronous);
      }
      for (std::size_t k = 0; k < jobs.size(); ++k) {
        jobs[k]->wait();
        succeeded += jobs[k]->getResult() && pieces[k]->eachRanOnce();
      }
    });
  for (std::thread& starter : starters) starter.join();
  EXPECT_EQ(succeeded, 160);
}

TEST(Action, ThreadsThatRunOneActionTakeTurns) {
  std::atomic<int> active{0}, ran{0}, accepted{0};
  std::atomic<bool> overlapped{false};
  Job job([&](const RunShare&) {
    if (++active != 1) overlapped = true;
    ++ran;
    std::this_thread::yield();
    --active;
  });
  std::vector<std::thread> runners;
  for (int i = 0; i < 4; ++i)
    runners.emplace_back([&] {
      for (int k = 0; k < 200; ++k) accepted += job.run(eSynchroType::Synchronous).isOk();
    });
  for (std::thread& runner : runners) runner.join();
  EXPECT_FALSE(overlapped);
  EXPECT_EQ(ran, accepted);
  EXPECT_GT(ran, 0);
}

TEST(Action, OnlyASharedActionRunsInTheBackground) {
  Job job([](const RunShare&) {});
  EXPECT_FALSE(job.run(eSynchroType::Asynchronous));
  EXPECT_FALSE(job.isRunning());
  EXPECT_NO_THROW(job.rethrowFailure());
  EXPECT_TRUE(job.run(eSynchroType::Synchronous));
}

/// Runs `child` in a forked process and answers its status; one that hangs is killed.
template <class Child>
int statusOfFork(const Child& child) {
  const pid_t id = fork();
  if (id == 0) {
    alarm(60);
    _exit(child());
  }
  int status = -1;
  waitpid(id, &status, 0);
  return status;
}

/// Both kinds of run, with more pieces than threads.
bool runsWell(std::size_t threads) {
  for (const auto synchro : {eSynchroType::Synchronous, eSynchroType::Asynchronous}) {
    Pieces inner(20), outer(20, [&](auto, const RunShare&share) {
      ActionRunner::getInstance().run(inner, share);
      share.done();
    });
    const auto job = jobOf(outer);
    job->setThreadLimit(threads);
    if (!job->run(synchro)) return false;
    job->wait();
    if (!job->getResult() || !outer.eachRanOnce() || inner.started != 400) return false;
  }
  return true;
}

#ifndef __SANITIZE_ADDRESS__  // whose allocator a child may find locked
TEST_P(BackgroundRun, AForkedChildRunsAnew) {
  std::atomic<bool> ended{false};
  Pieces busy(1000000, [&](auto, const RunShare& share) {
    if (ended) share.state.cancel();
  });
  const auto job = jobOf(busy);
  job->setThreadLimit(GetParam());
  ASSERT_TRUE(job->run(eSynchroType::Asynchronous));
  for (int round = 0; round < 20; ++round)
    EXPECT_EQ(statusOfFork([] { return runsWell(GetParam()) ? 0 : 1; }), 0);
  ended = true;
  job->wait();
}
#endif

#ifndef __SANITIZE_THREAD__  // which needs a thread of its own
TEST_P(BackgroundRun, CompletesWhereNoThreadIsGranted) {
  EXPECT_EQ(statusOfFork([] {
              // The limit does not hold for root.
              if (geteuid() == 0 && setuid(65534) != 0) return 2;
              const rlimit none{0, 0};
              if (setrlimit(RLIMIT_NPROC, &none) != 0) return 3;
              try {
                std::thread([] {}).join();
                return 4;
              } catch (const std::system_error&) {
              }
              return runsWell(GetParam()) ? 0 : 1;
            }),
            0);
}
#endif

TEST(ActionRunner, ThreadsAreNoMoreThanPiecesAndSomeForEachProcessor) {
  const std::size_t most = std::max<std::size_t>(16, 4 * ActionRunner::getDefaultThreadCount());
  for (const std::size_t count : {std::size_t(3), std::size_t(5000)}) {
    Pieces pieces(count, [](auto, const RunShare& share) {
      std::this_thread::sleep_for(std::chrono::microseconds(100));
      share.done();
    });
    const auto job = jobOf(pieces);
    job->setThreadLimit(4096);
    EXPECT_TRUE(job->run(eSynchroType::Synchronous));
    EXPECT_LE(pieces.mostAtOnce, static_cast<int>(std::min(count, most)));
    std::size_t threads = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
      ++threads;
    EXPECT_LT(threads, 2 * most + 16);
  }
}

TEST(ActionRunner, UrgentRunsGoFirst) {
  std::atomic<bool> begun{false};
  Pieces slow(2000, [&](auto, const RunShare& share) {
    begun = true;
    std::this_thread::sleep_for(std::chrono::microseconds(50));
    share.done();
  });
  Pieces urgent(200, [&](auto, const RunShare& share) {
    std::this_thread::sleep_for(std::chrono::microseconds(50));
    share.done();
  });
  const auto low = jobOf(slow), high = jobOf(urgent);
  low->setPriority(ePriority::Low);
  high->setPriority(ePriority::High);
  low->setThreadLimit(3);
  high->setThreadLimit(3);
  ASSERT_TRUE(low->run(eSynchroType::Asynchronous));
  eventually([&] { return begun.load(); });
  ASSERT_TRUE(high->run(eSynchroType::Synchronous));
  EXPECT_TRUE(low->isRunning());
  EXPECT_EQ(urgent.mostAtOnce, 3);
  low->wait();
  EXPECT_TRUE(slow.eachRanOnce() && urgent.eachRanOnce());
}

TEST(ActionRunner, ThreadCountIsThatOfLaterRuns) {
  ActionRunner& runner = ActionRunner::getInstance();
  EXPECT_GE(runner.getThreadCount(), 1u);
  std::size_t seen = 0;
  Job job([&](const RunShare& share) { seen = share.state.getThreadCount(); });
  for (const std::size_t count : {std::size_t(5), std::size_t(1), std::size_t(0)}) {
    runner.setThreadCount(count);
    EXPECT_EQ(runner.getThreadCount(), count ? count : ActionRunner::getDefaultThreadCount());
    EXPECT_TRUE(job.run(eSynchroType::Synchronous));
    EXPECT_EQ(seen, runner.getThreadCount());
  }
  EXPECT_THROW(runner.setThreadCount(1000000), BaseException);
  EXPECT_THROW(job.setThreadLimit(std::size_t(-1)), BaseException);
  job.setThreadLimit(2);
  EXPECT_TRUE(job.run(eSynchroType::Synchronous));
  EXPECT_EQ(seen, 2u);
}

}  // namespace
