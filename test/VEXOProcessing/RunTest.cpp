#include <gtest/gtest.h>

#include <boost/weak_ptr.hpp>

#include "VEXOProcessing/TestProcessors.h"

#if defined(__SANITIZE_ADDRESS__)
/// Memory that cannot be had must fail as it does without the sanitizer, not end the program.
extern "C" VEXO_API const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}
#endif

namespace {

using namespace vexo;
using namespace vexo::processor;
using namespace vexo::test;
namespace attr = vexo::test::attr;
using core::eSynchroType;
using image::Image;
using image::ImageGeometry;

const auto u16 = image::eImageBufferType::UInt16;

/// The steps of a run in the order in which they happen.
class StepLog {
public:
  void add(const std::string& step) {
    std::unique_lock<std::mutex> lock(_mutex);
    _text += step + " ";
  }
  std::string take() {
    std::unique_lock<std::mutex> lock(_mutex);
    return std::exchange(_text, {});
  }
  /// A provider that notes that it was made, and each of its pieces.
  Provider provider(const std::string& name, std::size_t count) {
    add("get" + name);
    return pieces(count, [this, name](std::size_t) { add(name); });
  }

private:
  std::mutex _mutex;
  std::string _text;
};

TEST(Steps, RunOneAfterTheOther) {
  StepLog log;
  const auto one = makeReady<Steps1>();
  const auto two = makeReady<Steps2>();
  const auto three = makeReady<Steps3>(), skipping = makeReady<Steps3>();
  const auto none = makeReady<Repeated>(), four = makeReady<Repeated>();
  const auto named = [&](std::size_t i) {
    return log.provider(std::string(1, static_cast<char>('A' + i)), 3);
  };
  one->step = two->step = three->step = none->step = four->step = named;
  skipping->step = [&](std::size_t i) { return i == 1 ? nullptr : named(i); };
  four->count = 4;
  const std::pair<boost::shared_ptr<BaseProcessor>, const char*> runs[] = {
      {one, "getA A A A "},
      {two, "getA A A A getB B B B "},
      {three, "getA A A A getB B B B getC C C C "},
      {skipping, "getA A A A getC C C C "},
      {none, ""},
      {four, "getA A A A getB B B B getC C C C getD D D D "}};
  for (const auto synchro : {eSynchroType::Synchronous, eSynchroType::Asynchronous})
    for (const auto& [p, steps] : runs) {
      p->setThreadLimit(3);
      EXPECT_TRUE(p->run(synchro));
      p->wait();
      EXPECT_TRUE(p->getResult());
      EXPECT_EQ(p->getProgress(), 1);
      EXPECT_EQ(log.take(), steps);
    }
}

TEST(Steps, NestedKeepTheirOrder) {
  StepLog log;
  const auto two = makeReady<Steps2>();
  two->step = [&](std::size_t i) { return log.provider(i == 0 ? "a" : "b", 2); };
  const auto three = makeReady<Steps3>();
  three->step = [&](std::size_t i) {
    return i == 1 ? makeSingleActionProvider(two) : log.provider(i == 0 ? "A" : "C", 2);
  };
  const auto outer = makeReady<Steps2>();
  outer->step = [&](std::size_t i) {
    return i == 0 ? makeSingleActionProvider(three) : log.provider("Z", 1);
  };
  for (const std::size_t threads : {1, 2, 7}) {
    outer->setThreadLimit(threads);
    executeSyncRun(outer);
    EXPECT_EQ(log.take(), "getA A A geta a a getb b b getC C C getZ Z ") << threads;
  }
}

TEST(Failure, OfARuleIsThrownByTheSynchronousRunAndKeptByTheOther) {
  const auto p = makeSum(rangeImage({9, 8}, u16, 0, 9, 1));
  p->set<attr::OutImg>(Image::create({9, 9}, u16));
  EXPECT_TRUE(p->run(eSynchroType::Asynchronous)) << "starting does not fail";
  p->wait();
  EXPECT_TRUE(has(p->getResult().getMessage(), "differ in size"));
  for (int again = 0; again < 2; ++again) expectFailure({"differ in size"}, [&] { p->rethrowFailure(); });
  expectFailure({"differ in size"}, [&] { CallForms<WindowSumLvl1, attr::OutImg>::await(p); });
  p->set<attr::OutImg>(Image::create({9, 8}, u16));
  executeSyncRun(p);
  EXPECT_TRUE(p->getResult()) << "a failure ends with the next run";
  EXPECT_NO_THROW(p->rethrowFailure());
}

class Threads : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Counts, Threads, testing::Values(1, 2, 3, 7));

TEST_P(Threads, FailureInAPieceStopsTheOthersAndTheStepsAfter) {
  std::atomic<std::size_t> begun{0};
  const auto p = makeReady<Steps2>(), inner = makeReady<Steps2>();
  p->set<attr::InOptMask>(rangeImage({4, 3}, u16, 0, 9, 1));
  p->setThreadLimit(GetParam());
  inner->step = [&](std::size_t i) {
    if (i != 0) ADD_FAILURE() << "the second step ran after the first failed";
    return pieces(1000, [&](std::size_t) {
      ++begun;
      throw std::runtime_error("piece broke");
    });
  };
  for (const bool nested : {false, true}) {
    begun = 0;
    p->step = [&](std::size_t i) { return nested ? makeSingleActionProvider(inner) : inner->step(i); };
    expectFailure<UnHandleException>({"piece broke"}, [&] { executeSyncRun(p); });
    EXPECT_LE(begun, GetParam()) << "each thread stops at its first failure";
    EXPECT_EQ(p->getStorage<attr::OutImg>(), nullptr);
    EXPECT_LT(p->getProgress(), 1);
  }
}

TEST(Steps, ShareTheProgress) {
  const auto p = makeReady<Steps3>();
  const auto inner = makeReady<Repeated>();
  std::vector<double> atStep;
  inner->count = 4;
  inner->step = [&](std::size_t) {
    atStep.push_back(p->getProgress());
    return pieces(5, [](std::size_t) {});
  };
  p->step = [&](std::size_t i) {
    atStep.push_back(p->getProgress());
    return i == 1 ? makeSingleActionProvider(inner) : pieces(i == 2 ? 0 : 100, [](std::size_t) {});
  };
  executeSyncRun(p);
  EXPECT_EQ(p->getProgress(), 1);
  const std::vector<double> expected = {0, 1 / 3., 1 / 3., 5 / 12., 1 / 2., 7 / 12., 2 / 3.};
  ASSERT_EQ(atStep.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(atStep[i], expected[i], 1e-9) << i;
}

TEST(Failure, TellsItsKind) {
  const auto p = makeReady<EveryKind>();
  const auto refused = [&](const std::string& attribute, std::initializer_list<std::string> parts,
                           const std::function<void()>& call) {
    try {
      call();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const RefusedValueException& thrown) {
      EXPECT_EQ(thrown.getAttributeName(), attribute);
      EXPECT_EQ(thrown.getMessage().rfind("EveryKind: " + attribute, 0), 0u) << thrown.getMessage();
      for (const std::string& part : parts) EXPECT_TRUE(has(thrown.getMessage(), part));
    }
  };
  refused("InCount", {"13 brings no luck"}, [&] { p->set<attr::InCount>(13); });
  refused("InCount", {"13 brings no luck"}, [&] { p->accessAttribute<attr::InCount>()->setText("13"); });
  refused("InImg", {"null"}, [&] { p->set<attr::InImg>(nullptr); });
  refused("InFactor", {"not set"}, [&] { p->getStorage<attr::InFactor>(); });

  const auto steps = makeReady<Steps1>();
  steps->step = [&](std::size_t) { return pieces(3, [&](std::size_t) { steps->cancel(); }); };
  EXPECT_THROW(executeSyncRun(steps), CancelledException);
  steps->step = [](std::size_t) -> Provider { throw std::bad_alloc(); };
  EXPECT_THROW(executeSyncRun(steps), OutOfMemoryException);
  // More than any machine has; the parameter that asked for it is named.
  const auto huge = makeReady<WindowSumLvl1>();
  std::uint8_t sample = 0;
  image::ImageStrides same{};
  huge->set<attr::InImg>(
      image::Image::wrapConst(&sample, {1u << 20, 1u << 20, 1u << 20}, image::eImageBufferType::UInt8, same));
  huge->set<attr::InHalfKnlSizeX>(0);
  try {
    executeSyncRun(huge);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const OutOfMemoryException& thrown) {
    EXPECT_EQ(thrown.getBytes(), std::size_t(1) << 60);
    EXPECT_TRUE(has(thrown.getMessage(), "WindowSumLvl1: OutImg"));
  }
}

TEST(Waiting, EndsWithTheTimeOrTheRun) {
  const auto p = makeReady<Steps1>();
  EXPECT_TRUE(p->waitFor(std::chrono::hours(1))) << "nothing runs";
  std::atomic<bool> goOn{false};
  p->step = [&](std::size_t) {
    return pieces(1, [&](std::size_t) { ASSERT_TRUE(eventually([&] { return goOn.load(); })); });
  };
  ASSERT_TRUE(p->run(core::eSynchroType::Asynchronous));
  EXPECT_FALSE(p->waitFor(std::chrono::milliseconds(1)));
  goOn = true;
  EXPECT_TRUE(p->waitFor(std::chrono::minutes(1)));
  EXPECT_EQ(p->getProgress(), 1);
}

TEST(Steps, ShareTheProgressByTheirCostAndLeaveWhatTheyDoNotNeed) {
  const auto p = makeReady<Steps3>();
  p->costs = {1, 4, 15};
  for (const int idle : {0, 1, 2}) {
    std::vector<double> atStep;
    p->step = [&](std::size_t i) -> Provider {
      atStep.push_back(p->getProgress());
      if (int(i) == idle) return nullptr;
      return pieces(10, [](std::size_t) {});
    };
    executeSyncRun(p);
    EXPECT_EQ(p->getProgress(), 1);
    const std::vector<double> expected = idle == 0   ? std::vector<double>{0, 0, 4 / 19.}
                                         : idle == 1 ? std::vector<double>{0, 0.05, 0.05}
                                                     : std::vector<double>{0, 0.05, 0.05 + 0.95 * 4 / 19.};
    ASSERT_EQ(atStep.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(atStep[i], expected[i], 1e-9) << idle << ' ' << i;
  }
}

TEST_P(Threads, CancelledRunsFailOrAreRight) {
  const auto in = rangeImage({300, 400, 4}, u16, 0, 9, 1);
  const auto wanted = sumOf(*in, u16, 2);
  std::mt19937 random(9);
  int cancelled = 0;
  for (int i = 0; i < 60; ++i) {
    const auto p = makeSum(in, 2);
    p->setThreadLimit(GetParam());
    ASSERT_TRUE(p->run(eSynchroType::Asynchronous));
    // From at once to about the time of a whole run.
    const auto until =
        std::chrono::steady_clock::now() + std::chrono::microseconds(i < 3 ? 0 : random() % 4000);
    while (std::chrono::steady_clock::now() < until) std::this_thread::yield();
    p->cancel();
    p->wait();
    if (const BoolResult result = p->getResult(); !result) {
      ++cancelled;
      EXPECT_TRUE(has(result.getMessage(), "cancelled"));
      EXPECT_EQ(p->getStorage<attr::OutImg>(), nullptr);
    } else {
      EXPECT_TRUE(sameBits(resultOf(*p), *wanted));
    }
    if (i % 10 == 0) {
      executeSyncRun(p);
      EXPECT_TRUE(sameBits(resultOf(*p), *wanted)) << "a cancelled processor can be run again";
    }
  }
  EXPECT_GT(cancelled, 0);
}

TEST(Cancel, BetweenStepsStopsBeforeTheNext) {
  const auto p = makeReady<Steps3>();
  StepLog log;
  p->step = [&](std::size_t i) {
    if (i == 1) p->cancel();
    return log.provider(std::string(1, static_cast<char>('A' + i)), 2);
  };
  expectFailure({"cancelled"}, [&] { executeSyncRun(p); });
  EXPECT_EQ(log.take(), "getA A A getB ");
  p->cancel();
  p->step = nullptr;
  EXPECT_NO_THROW(executeSyncRun(p)) << "only a run that is under way is cancelled";
}

TEST(Asynchronous, RunGoesOnWithoutItsHandle) {
  const auto in = rangeImage({30, 40, 3}, u16, 0, 9, 1), wanted = sumOf(*in, u16, 2);
  std::vector<boost::weak_ptr<BaseProcessor>> processors;
  std::vector<boost::shared_ptr<Image>> results;
  for (int i = 0; i < 10; ++i) {
    auto p = makeSum(in, 2);
    results.push_back(Image::create(in->getGeometry(), u16));
    p->set<attr::OutImg>(results.back());
    processors.push_back(p);
    ASSERT_TRUE(p->run(eSynchroType::Asynchronous));
  }
  for (const auto& p : processors) ASSERT_TRUE(eventually([&] { return p.expired(); }));
  for (const auto& result : results) EXPECT_TRUE(sameBits(*result, *wanted));
}

TEST(ManyCalls, AtOnceOnSharedInputsAreAllRight) {
  const std::vector<boost::shared_ptr<Image>> inputs = {rangeImage({31, 40}, u16, 0, 9, 1),
                                                        rangeImage({17, 9, 4}, u16, 0, 9, 2)};
  std::vector<boost::shared_ptr<Image>> wanted;
  for (const auto& in : inputs) wanted.push_back(sumOf(*in, u16, 2));
  std::vector<std::thread> threads;
  std::atomic<bool> go{false};
  std::atomic<int> right{0};
  for (int i = 0; i < 64; ++i)
    threads.emplace_back([&, i] {
      while (!go) std::this_thread::yield();
      for (int call = 0; call < 3; ++call) {
        const std::size_t which = (i + call) % 2;
        const auto p = makeSum(inputs[which], 2);
        if (i % 4 == 3) p->setThreadLimit(static_cast<std::size_t>(i % 5));
        if (i % 3 == 0) p->setPriority(core::ePriority::High);
        if (i % 2) {
          executeSyncRun(p);
        } else {
          p->run(eSynchroType::Asynchronous);
          p->wait();
        }
        right += p->getResult() && sameBits(resultOf(*p), *wanted[which]);
      }
    });
  go = true;
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(right, 192);
}

}  // namespace
