#include <gtest/gtest.h>

#include <thread>

#include "Filters.h"

namespace vexo::test {
namespace {

using core::eSynchroType;
using processor::BaseImageAttribute;
using processor::BaseProcessor;

class EveryFilter : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Threads, EveryFilter, testing::ValuesIn(filterNames()),
                         [](const auto& info) { return info.param.substr(info.param.rfind(':') + 1); });

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
    const std::string expected = resultOf(*alone);
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
      EXPECT_TRUE(expected == resultOf(*run)) << "with " << run->getThreadLimit() << " threads";
    }
  }
}

// In place, where strips read what others write.
TEST_P(EveryFilter, InPlaceGivesTheResultOfOneThread) {
  const auto alone = makeFilter(GetParam(), {40, 150, 2}, image::eImageBufferType::Real32);
  alone->setThreadLimit(1);
  processor::executeSyncRun(alone);
  const auto filter = makeFilter(GetParam(), {40, 150, 2}, image::eImageBufferType::Real32);
  boost::shared_ptr<BaseImageAttribute> output;
  for (const auto& attribute : filter->getAttributes())
    if (const auto image = boost::dynamic_pointer_cast<BaseImageAttribute>(attribute);
        image && image->isOutput() && !image->isOptional())
      output = image;
  if (!output) GTEST_SKIP() << "no image comes out";
  for (const auto& attribute : filter->getAttributes())
    if (const auto image = boost::dynamic_pointer_cast<BaseImageAttribute>(attribute);
        image && image->isInput() && image->getImage()->getBufferType() == image::eImageBufferType::Real32) {
      output->setImage(boost::const_pointer_cast<image::BaseImage>(image->getImage()));
      break;
    }
  filter->setThreadLimit(4);
  processor::executeSyncRun(filter);
  EXPECT_TRUE(resultOf(*alone) == resultOf(*filter));
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
