#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <new>

#include "FailingMemory.h"
#include "VEXOCore/Buffer.h"
#include "VEXOImageIO/ImageIO.h"
#include "VEXOSerialization/JsonArchive.h"
#include "tools/Filters.h"

namespace vexo::test {
namespace {

using core::eSynchroType;
using processor::BaseProcessor;

/// Several strips and planes, so that threads take part.
const image::ImageGeometry geometry{40, 150, 3, 1, 2};

/// Runs to the end; throws what made the run fail.
Result run(BaseProcessor& filter, eSynchroType synchro) {
  const BoolResult begun = filter.run(synchro);
  filter.wait();
  filter.rethrowFailure();
  if (!begun) throw BaseException(begun.getMessage(), VEXO_HERE);
  return resultOf(filter);
}

/// Whether `call` fails as a host expects it: with an exception of the library, or of memory.
template <class Call>
bool failsCleanly(const Call& call) {
  try {
    call();
    return false;
  } catch (const BaseException& failure) {
    EXPECT_STRNE("", failure.what());
  } catch (const std::bad_alloc&) {
  }
  return true;
}

long failures = 0;

/// Fails each allocation of `call` in turn, until it has fewer.
template <class Call>
long failEach(const Call& call) {
  for (long number = 1;; ++number) {
    bool failed = false, leaves = true;
    long made = 0;
    // Some attempts leave what is meant to last, such as what a thread needs for its first message. A leak
    // leaves something each time.
    for (int attempt = 0; leaves && attempt < 8; ++attempt) {
      const long before = countBlocks();
      failAllocation(number);
      failed = failsCleanly(call);
      made = endFailing();
      failures += made >= number;
      // Threads end a little later than the run that they took part in.
      for (int wait = 0; wait < 10 && countBlocks() > before; ++wait) usleep(200);
      leaves = countBlocks() > before;
    }
    EXPECT_FALSE(leaves) << "after failure " << number << ", in " << failedLibrary();
    if (!failed && made < number) return number - 1;
  }
}

class EveryFilter : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Faults, EveryFilter, testing::ValuesIn(filterNames()),
                         [](const auto& info) { return shortName(info.param); });

TEST_P(EveryFilter, SurvivesEachFailedAllocation) {
  const auto filter = makeFilter(GetParam(), geometry, image::eImageBufferType::UInt16);
  const Result expected = run(*filter, eSynchroType::Synchronous);
  for (const std::size_t threads : {std::size_t(1), std::size_t(3)})
    for (const auto synchro : {eSynchroType::Synchronous, eSynchroType::Asynchronous}) {
      filter->setThreadLimit(threads);
      run(*filter, synchro);  // what is made at its first use is there now
      const long failures = failEach([&] { run(*filter, synchro); });
      EXPECT_GT(failures, 10);
      EXPECT_EQ("", findDifference(expected, run(*filter, synchro)));
    }
  // Everything from some point on, as when memory is really gone.
  for (long number = 1; number < 200; number += 7) {
    failAllocation(number, true);
    failsCleanly([&] { run(*filter, eSynchroType::Asynchronous); });
    endFailing();
  }
  EXPECT_EQ("", findDifference(expected, run(*filter, eSynchroType::Synchronous)));
}

TEST(Memory, SerialFormSurvivesEachFailedAllocation) {
  const auto filter = makeFilter(filterNames().front(), {5, 4}, image::eImageBufferType::Real32);
  std::string text;
  const auto exchange = [&] {
    JsonOArchive out;
    filter->write(out);
    JsonIArchive in(text = out.getText());
    if (const BoolResult read = filter->read(in); !read) throw BaseException(read.getMessage(), VEXO_HERE);
  };
  exchange();
  const std::string expected = text;
  EXPECT_GT(failEach(exchange), 100);
  exchange();
  EXPECT_EQ(expected, text);
}

/// Large images have memory that is mapped.
TEST(Memory, LargeImagesSurviveEachFailedAllocation) {
  setRecycledMemoryLimit(0);
  for (const char* name :
       {"filter::MeanSmoothing2dImg", "filter::GaussianSmoothing2dImg", "logic::MaskImgImg"})
    for (const auto synchro : {eSynchroType::Synchronous, eSynchroType::Asynchronous}) {
      const auto filter = makeFilter("vexo::imaproc::" + std::string(name) + "Lvl1", {1200, 1200},
                                     image::eImageBufferType::UInt8);
      const Result expected = run(*filter, synchro);
      EXPECT_GT(failEach([&] { run(*filter, synchro); }), 10);
      EXPECT_EQ("", findDifference(expected, run(*filter, synchro)));
    }
  setRecycledMemoryLimit(std::size_t(256) << 20);
}

/// What a child does with an allocation that fails: first calls make what lasts, and files are a library's.
const std::map<std::string, void (*)()> childWork = {
    {"filter",
     [] {
       const auto filter =
           makeFilter("vexo::imaproc::filter::Bilateral2dImgLvl1", geometry, image::eImageBufferType::UInt16);
       filter->setThreadLimit(3);
       run(*filter, eSynchroType::Asynchronous);
     }},
    {"files", [] {
       for (const char* type : {".tif", ".png"}) {
         const struct File {
           const std::string path;
           ~File() { unlink(path.c_str()); }
         } file{testing::TempDir() + "vexo-fault-" + std::to_string(getpid()) + type};
         image::io::writeImage(*randomImage({70, 60}, image::eImageBufferType::UInt16), file.path);
         image::io::readImage(file.path);
       }
     }}};

/// 0: as it should be, 3: nothing failed any more.
int runChild(const std::string& kind, long number, int channel) {
  failAllocation(number);
  const bool failed = failsCleanly(childWork.at(kind));
  const long made = endFailing();
  if (!failed && made < number) return 3;
  dprintf(channel, "%s", failedLibrary());
  childWork.at(kind)();
  return 0;
}

/// What became of a child whose allocation of that number failed.
std::string attempt(const std::string& kind, long number) {
  int channel[2];
  if (pipe(channel) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    execl("/proc/self/exe", "FaultTest", "--child", kind.c_str(), std::to_string(number).c_str(),
          std::to_string(channel[1]).c_str(), nullptr);
    _exit(99);
  }
  close(channel[1]);
  std::string library;
  for (char c; read(channel[0], &c, 1) == 1;) library += c;
  close(channel[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (status == 0) return "well";
  return WIFEXITED(status) && WEXITSTATUS(status) == 3 ? "end" : "fault in " + library;
}

class Child : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Memory, Child, testing::Values("filter", "files"));

TEST_P(Child, SurvivesEachFailedAllocation) {
  std::map<std::string, int> outcomes;
  for (long number = 1; number < 5000; ++number) {
    const std::string outcome = attempt(GetParam(), number);
    if (outcome == "end") break;
    ++outcomes[outcome];
  }
  EXPECT_GT(outcomes["well"], 100);
  for (const auto& [outcome, times] : outcomes) {
    std::cout << times << " times " << outcome << "\n";
    // libtiff uses some memory without a look at whether it got it.
    if (outcome != "fault in libtiff.so.6") {
      EXPECT_EQ("well", outcome) << times << " times";
    }
  }
}

}  // namespace
}  // namespace vexo::test

int main(int argc, char** argv) {
  if (argc == 5 && std::string(argv[1]) == "--child")
    return vexo::test::runChild(argv[2], std::atol(argv[3]), std::atoi(argv[4]));
  testing::InitGoogleTest(&argc, argv);
  const int status = RUN_ALL_TESTS();
  std::cout << vexo::test::failures << " allocations failed in this process\n";
  return status;
}
