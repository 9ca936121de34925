#include "VEXOCore/Action.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <vector>

#include "VEXOCore/BaseException.h"

namespace {

using namespace vexo;
using namespace vexo::core;

/// Waits for what other threads must bring about; false when they do not.
template <class Condition>
bool eventually(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

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
    try {
      _body(index, share);
    } catch (...) {
      --_active;
      throw;
    }
    --_active;
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
    Pieces pieces(count);
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

TEST_P(ActionRun, NestedPiecesRunOnceOnTheSameThreads) {
  std::vector<std::unique_ptr<Pieces>> inner;
  for (int i = 0; i < 13; ++i) inner.push_back(std::make_unique<Pieces>(17));
  Pieces outer(inner.size(), [&](std::size_t index, const RunShare& share) {
    ActionRunner::getInstance().run(*inner[index], share);
  });
  const auto job = jobOf(outer);
  const BoolResult result = runToEnd(*job);
  ASSERT_TRUE(result) << result.getMessage();
  EXPECT_TRUE(outer.eachRanOnce());
  for (const auto& pieces : inner) {
    EXPECT_TRUE(pieces->eachRanOnce());
    EXPECT_LE(pieces->mostAtOnce, static_cast<int>(threads()));
  }
  EXPECT_EQ(job->getProgress(), 1);
}

TEST_P(ActionRun, TheFirstFailureEndsTheRunAndIsReported) {
  std::atomic<int> place{0};
  Pieces pieces(1000, [&](std::size_t, const RunShare& share) {
    if (place++ == 0) throw std::runtime_error("first");
    eventually([&] { return share.state.isStopped(); });
    throw std::runtime_error("late");
  });
  Pieces outer(1,
               [&](std::size_t, const RunShare& share) { ActionRunner::getInstance().run(pieces, share); });
  const auto job = jobOf(outer);
  const BoolResult result = runToEnd(*job);
  EXPECT_FALSE(result);
  EXPECT_EQ(result.getMessage(), "first");
  EXPECT_LE(pieces.started, static_cast<int>(threads()));
  EXPECT_LT(job->getProgress(), 1);
  try {
    job->rethrowFailure();
    FAIL();
  } catch (const UnHandleException& failure) {
    EXPECT_EQ(failure.getMessage(), "first");
  }
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
  BoolResult result = runToEnd(*job);
  EXPECT_FALSE(result);
  EXPECT_NE(result.getMessage().find("the job was cancelled"), std::string::npos) << result.getMessage();
  EXPECT_LE(pieces.started, static_cast<int>(threads()));
  EXPECT_THROW(job->rethrowFailure(), BaseException);
  // Neither that run nor a cancel between runs affects the next run.
  job->cancel();
  cancels = false;
  result = runToEnd(*job);
  EXPECT_TRUE(result) << result.getMessage();
  EXPECT_NO_THROW(job->rethrowFailure());
}

TEST_P(ActionRun, ProgressNeverFalls) {
  std::atomic<bool> ended{false};
  Pieces outer(40, [&](std::size_t index, const RunShare& share) {
    Pieces inner(index);
    ActionRunner::getInstance().run(inner, share);
  });
  const auto job = jobOf(outer);
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
}

TEST_P(ActionRun, AnythingThrownIsAFailure) {
  const auto failing = [&](auto thrown) {
    return boost::make_shared<Job>([thrown](const RunShare&) { throw thrown; });
  };
  EXPECT_EQ(runToEnd(*failing(UnHandleException("own", VEXO_HERE))).getMessage(), "own");
  EXPECT_THROW(
      {
        const auto job = failing(BaseException("own", VEXO_HERE));
        EXPECT_FALSE(runToEnd(*job));
        job->rethrowFailure();
      },
      BaseException);
  const auto job = failing(5);
  EXPECT_FALSE(runToEnd(*job));
  EXPECT_THROW(job->rethrowFailure(), UnHandleException);
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
  for (const BoolResult& result : again) {
    EXPECT_FALSE(result);
    EXPECT_NE(result.getMessage().find("the job"), std::string::npos);
  }
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
  EXPECT_TRUE(job.run(eSynchroType::Synchronous));
}

TEST(Action, BeforeItsFirstRun) {
  Job job([](const RunShare&) {});
  EXPECT_FALSE(job.isRunning());
  EXPECT_TRUE(job.getResult());
  EXPECT_EQ(job.getProgress(), 0);
  EXPECT_NO_THROW(job.rethrowFailure());
  job.wait();
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
