#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include "tools/Filters.h"

namespace vexo::processor {
namespace {

/// So that first uses are made in the thread whose leaks are ignored.
void runInThisThread(const std::string& name) {
  const auto filter = test::makeFilter(name, {20, 300}, image::eImageBufferType::UInt16);
  filter->setThreadLimit(1);
  executeSyncRun(filter);
}

// Classes are known while their library is loaded, however often that happens.
TEST(Library, RegistersItsClassesWhileItIsLoaded) {
#ifdef __SANITIZE_ADDRESS__
  // What a library makes at its first use stays when it is unloaded.
  const __lsan::ScopedDisabler ignoreLeaks;
#endif
  const std::string name = "vexo::imaproc::logic::MaskImgImgLvl1";
  for (int round = 0; round < 3; ++round) {
    ASSERT_FALSE(ProcessorFactory::isRegistered(name)) << round;
    void* library = dlopen(VEXO_PROCESSOR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(ProcessorFactory::createProcessor(name)->getClassName(), name);
    const auto names = ProcessorFactory::getTypeNames();
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 1);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    runInThisThread(name);
    // Runs in its code, which nobody waits for, end before it goes.
    for (int run = 0; run < 20; ++run)
      test::makeFilter(name, {200, 300, 4}, image::eImageBufferType::UInt16)
          ->run(core::eSynchroType::Asynchronous);
    ASSERT_EQ(dlclose(library), 0);
  }
  EXPECT_FALSE(ProcessorFactory::isRegistered(name));
  EXPECT_THROW(ProcessorFactory::createProcessor(name), BaseException);
}

}  // namespace
}  // namespace vexo::processor
