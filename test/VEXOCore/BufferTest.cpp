#include "VEXOCore/Buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "tools/Calls.h"

#if defined(__SANITIZE_ADDRESS__)
/// Memory that cannot be had must fail as it does without the sanitizer, not end the program.
extern "C" VEXO_API const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}
#endif

namespace {

using namespace vexo;
using test::expectFailure;

constexpr std::size_t huge = std::numeric_limits<std::size_t>::max();
constexpr std::size_t mebi = std::size_t(1) << 20;

bool isAligned(const void* data) {
  return reinterpret_cast<std::uintptr_t>(data) % bufferAlignment == 0;
}

TEST(Block, IsAlignedAndWritableToItsEnd) {
  // Twice, so that the second block may be a recycled one.
  for (int round = 0; round < 2; ++round)
    for (const std::size_t size : {std::size_t(0), std::size_t(1), std::size_t(63), std::size_t(65), mebi - 1,
                                   mebi, mebi + 1, 3 * mebi + 4095, 20 * mebi}) {
      const auto block = allocateBlock(size);
      ASSERT_TRUE(block && isAligned(block.get())) << size;
      std::memset(block.get(), 0xa5, size);
    }
}

TEST(Size, ThatCannotBeHadIsNamed) {
  for (const std::size_t size : {huge, huge - 63, huge - 4095, huge / 2})
    expectFailure({std::to_string(size)}, [&] { allocateBlock(size); });
  EXPECT_EQ(checkedMultiply(huge / 3, 3, "x"), huge);
  EXPECT_EQ(checkedMultiply(huge, 0, "x"), 0u);
  EXPECT_EQ(checkedAdd(huge - 1, 1, "x"), huge);
  expectFailure({"the image"}, [] { checkedMultiply(huge / 3 + 1, 3, "the image"); });
  expectFailure({"the row"}, [] { checkedAdd(huge, 1, "the row"); });
  expectFailure({}, [] { FragHybridBuffer({huge - 100, 200}); });
  expectFailure({}, [] { FragHybridBuffer({huge}); });
}

class Recycling : public testing::Test {
protected:
  void SetUp() override {
    setRecycledMemoryLimit(0);
    setRecycledMemoryLimit(32 * mebi);
    if (getRecycledMemoryLimit() != 32 * mebi) GTEST_SKIP() << "this build recycles nothing";
  }
  void TearDown() override { setRecycledMemoryLimit(_limit); }

private:
  const std::size_t _limit = getRecycledMemoryLimit();
};

TEST_F(Recycling, GivesABlockOfTheSizeAgain) {
  void* const first = allocateBlock(8 * mebi).get();
  EXPECT_EQ(getRecycledMemory(), 8 * mebi);
  const auto tooSmall = allocateBlock(2 * mebi);
  EXPECT_NE(tooSmall.get(), first);
  const auto again = allocateBlock(8 * mebi - 5000);
  EXPECT_EQ(again.get(), first);
  EXPECT_EQ(getRecycledMemory(), 0u);
}

TEST_F(Recycling, NeverKeepsMoreThanItsLimit) {
  std::vector<boost::shared_ptr<void>> blocks;
  for (std::size_t size = 1; size <= 12; ++size) blocks.push_back(allocateBlock(size * mebi));
  while (!blocks.empty()) {
    blocks.pop_back();
    EXPECT_LE(getRecycledMemory(), 32 * mebi);
  }
  EXPECT_GT(getRecycledMemory(), 0u);
  allocateBlock(33 * mebi);
  EXPECT_LE(getRecycledMemory(), 32 * mebi);
  setRecycledMemoryLimit(3 * mebi);
  EXPECT_LE(getRecycledMemory(), 3 * mebi);
  setRecycledMemoryLimit(0);
  EXPECT_EQ(getRecycledMemory(), 0u);
  allocateBlock(2 * mebi);
  EXPECT_EQ(getRecycledMemory(), 0u);
}

TEST_F(Recycling, KeepsTheLargeBlockThatIsInUse) {
  // A large image made again and again among many small ones of different sizes.
  void* large = allocateBlock(16 * mebi).get();
  for (std::size_t size = 1; size <= 12; ++size) {
    allocateBlock(size * mebi);
    EXPECT_EQ(allocateBlock(16 * mebi).get(), large) << size;
  }
}

TEST_F(Recycling, NoBlockHasTwoOwners) {
  std::vector<std::thread> threads;
  for (unsigned id = 1; id <= 4; ++id)
    threads.emplace_back([id] {
      for (std::size_t round = 0; round < 200; ++round) {
        const auto block = allocateBlock((1 + round % 3) * mebi);
        auto* const word = static_cast<volatile unsigned*>(block.get());
        *word = id;
        std::this_thread::yield();
        ASSERT_EQ(*word, id);
      }
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(HybridBuffer, IsAlignedOnBothSidesOfItsStackSize) {
  for (const std::size_t size : {0, 1, 128, 129, 100000}) {
    HybridBuffer<128> buffer(size);
    EXPECT_TRUE(isAligned(buffer.data()));
    std::memset(buffer.data(), 1, size);
  }
}

TEST(FragHybridBuffer, FragmentsAreAlignedAndApart) {
  const std::vector<std::size_t> sizes = {1, 0, 64, 65, 3 * mebi, 7};
  FragHybridBuffer buffer(sizes);
  ASSERT_EQ(buffer.getFragmentCount(), sizes.size());
  for (std::size_t i = 0; i < sizes.size(); ++i)
    std::memset(buffer.fragment(i), static_cast<int>(i), sizes[i]);
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    EXPECT_TRUE(isAligned(buffer.fragment(i)));
    for (std::size_t k = 0; k < sizes[i]; ++k) ASSERT_EQ(buffer.fragment(i)[k], i);
  }
}

}  // namespace
