#include <gtest/gtest.h>

#include <thread>

#include "tools/Filters.h"

namespace vexo::test {
namespace {

using core::eSynchroType;
using processor::BaseProcessor;

class EveryFilter : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Threads, EveryFilter, testing::ValuesIn(filterNames()),
                         [](const auto& info) { return shortName(info.param); });

/// Gives the filter the images of another one as inputs.
void shareInputs(const BaseProcessor& from, const BaseProcessor& to) {
  for (const auto& attribute : from.getAttributes())
    if (attribute->isInput() && attribute->isSet())
      to.findAttribute(attribute->getName())->copyValue(*attribute);
}

// Runs of one thread and of several, at the same time, on the same inputs; each kind of split is among them.
TEST_P(EveryFilter, RunsAtOnceGiveTheResultOfOneThread) {
  for (const auto type : {image::eImageBufferType::UInt16, image::eImageBufferType::Real32}) {
    const auto alone = makeFilter(GetParam(), {40, 150, 2, 1, 2}, type);
    alone->setThreadLimit(1);
    processor::executeSyncRun(alone);
    const Result expected = resultOf(*alone);
    std::vector<boost::shared_ptr<BaseProcessor>> runs;
    for (const std::size_t threads : {4, 1, 3, 2}) {
      runs.push_back(makeFilter(GetParam(), {1, 1}, type));
      shareInputs(*alone, *runs.back());
      runs.back()->setThreadLimit(threads);
      ASSERT_TRUE(runs.back()->run(eSynchroType::Asynchronous));
    }
    for (const auto& run : runs) {
      run->wait();
      ASSERT_NO_THROW(run->rethrowFailure());
      EXPECT_EQ("", findDifference(expected, resultOf(*run)))
          << "with " << run->getThreadLimit() << " threads";
    }
  }
}

// In place, where strips read what others write.
TEST_P(EveryFilter, InPlaceGivesTheResultOfOneThread) {
  const auto alone = makeFilter(GetParam(), {40, 150, 2}, image::eImageBufferType::Real32);
  alone->setThreadLimit(1);
  processor::executeSyncRun(alone);
  const auto filter = makeFilter(GetParam(), {40, 150, 2}, image::eImageBufferType::Real32);
  const auto output = imageOutput(*filter);
  if (!output) GTEST_SKIP() << "no image comes out";
  for (const auto& input : imageInputs(*filter))
    if (input->getImage()->getBufferType() == image::eImageBufferType::Real32) {
      output->setImage(imageIn(*input));
      break;
    }
  filter->setThreadLimit(4);
  processor::executeSyncRun(filter);
  EXPECT_EQ("", findDifference(resultOf(*alone), resultOf(*filter)));
}

// A run is cancelled while its pieces are under way.
TEST_P(EveryFilter, ACancelledRunEnds) {
  for (int round = 0; round < 3; ++round) {
    const auto filter = makeFilter(GetParam(), {40, 300, 2}, image::eImageBufferType::UInt16);
    filter->setThreadLimit(4);
    ASSERT_TRUE(filter->run(eSynchroType::Asynchronous));
    while (filter->isRunning() && filter->getProgress() < 0.3 * round) std::this_thread::yield();
    filter->cancel();
    filter->wait();
    filter->getResult();
  }
}

}  // namespace
}  // namespace vexo::test
