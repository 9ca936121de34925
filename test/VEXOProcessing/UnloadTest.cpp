#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::processor {
namespace {

// Classes are known while their library is loaded, however often that happens.
TEST(Library, RegistersItsClassesWhileItIsLoaded) {
  const std::string name = "vexo::imaproc::logic::MaskImgImgLvl1";
  for (int round = 0; round < 3; ++round) {
    ASSERT_FALSE(ProcessorFactory::isRegistered(name)) << round;
    void* library = dlopen(VEXO_PROCESSOR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(ProcessorFactory::createProcessor(name)->getClassName(), name);
    const auto names = ProcessorFactory::getTypeNames();
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 1);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    ASSERT_EQ(dlclose(library), 0);
  }
  EXPECT_FALSE(ProcessorFactory::isRegistered(name));
  EXPECT_THROW(ProcessorFactory::createProcessor(name), BaseException);
}

}  // namespace
}  // namespace vexo::processor
