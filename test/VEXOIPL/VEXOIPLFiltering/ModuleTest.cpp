#include <gtest/gtest.h>
#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <filesystem>

#include "VEXOCore/InstructionSet.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

TEST(FilteringMessages, TablesAreRegisteredWhenTheLibraryIsLoaded) {
  const LogMessageManager& manager = LogMessageManager::getInstance("VEXOIPLFiltering");
  const auto text = [&](const char* enumeration, unsigned value) {
    return manager.getMessage(std::string("vexo::imaproc::filter::") + enumeration, value);
  };
  EXPECT_EQ(text("eProcessorMessage", 105), "Level 1 algorithm: Mean filter used to blur a 2d image");
  EXPECT_EQ(text("eProcessorMessage", 22),
            "Level 3 algorithm: convolution algorithm of input 2d image using a given kernel");
  EXPECT_EQ(text("eAttributeMessage", 1), "[InOut] Maximum value");
  EXPECT_EQ(text("eDataItemMessage", 4), "Lenghtscale (in meters), impacts other distance fields");
  EXPECT_EQ(text("eOutputInitializerMessage", 0), "Input attribute should not be null");
  EXPECT_EQ(text("eProcessorMessage", 1000), "");
  EXPECT_EQ(MeanSmoothing2dImgLvl1::getToolTipStr(), text("eProcessorMessage", 105));
}

class Recorder : public log4cplus::Appender {
public:
  ~Recorder() override { destructorImpl(); }
  void close() override {}
  std::vector<std::string> lines;

protected:
  void append(const log4cplus::spi::InternalLoggingEvent& event) override {
    lines.push_back(event.getLoggerName() + "|" + std::to_string(event.getLogLevel()) + "|" +
                    event.getMessage() + "|" + std::filesystem::path(event.getFile()).filename().string());
  }
};

TEST(FilteringMessages, ARaisedMessageIsLoggedAndThrownWithItsPlace) {
  const log4cplus::helpers::SharedObjectPtr<Recorder> recorder(new Recorder);
  log4cplus::Logger logger = getVEXOIPLFilteringLogger();
  logger.addAppender(log4cplus::SharedAppenderPtr(recorder.get()));
  try {
    raiseMessage<VEXOIPLFilteringException>(logger, VEXO_HERE, eOutputInitializerMessage::NullInput);
    FAIL();
  } catch (const VEXOIPLFilteringException& thrown) {
    EXPECT_STREQ(thrown.what(), "Input attribute should not be null");
    EXPECT_NE(thrown.getFunction().find("TestBody"), std::string::npos);
    EXPECT_EQ(thrown.getFile(), "test/VEXOIPL/VEXOIPLFiltering/ModuleTest.cpp");
    EXPECT_GT(thrown.getLine(), 0u);
  }
  logger.removeAppender(log4cplus::SharedAppenderPtr(recorder.get()));
  EXPECT_EQ(recorder->lines,
            std::vector<std::string>{"vexo.VEXOIPLFiltering|40000|Input attribute should not be null|"
                                     "ModuleTest.cpp"});
  EXPECT_EQ(getVEXOIPLFilteringLoggerName(), "vexo.VEXOIPLFiltering");
}

TEST(FilteringRegistration, KernelsAreRegisteredForWhatTheProcessorOffers) {
  const auto kernel = boost::dynamic_pointer_cast<processor::BaseProcessingAlgorithm>(
      processor::ProcessorFactory::createProcessor("vexo::imaproc::filter::MeanSmoothing2dImgLvl3"));
  ASSERT_TRUE(kernel);
  std::size_t expected = core::isAvailable(eIS_AVX) ? 1 : 0;  // AVX: float to float
  for (const eInstructionSet set : {eIS_Standard, eIS_SSE2, eIS_AVX2, eIS_AVX512})
    expected += core::isAvailable(set) ? 49 : 0;
  EXPECT_EQ(kernel->getFunctionSelector().getFunctionCount(), expected);
  EXPECT_TRUE(kernel->getForcedInstructionSets().isEmpty());
}

TEST(FilteringRegistration, EveryRegisteredClassDescribesItself) {
  const auto names = processor::ProcessorFactory::getTypeNames();
  ASSERT_FALSE(names.empty());
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const auto made = processor::ProcessorFactory::createProcessor(name);
    EXPECT_EQ(made->getClassName(), name);
    EXPECT_EQ(made->getClassVersion(), name == "vexo::imaproc::filter::HistoMedian3dImgLvl3" ? 2u : 1u);
    const std::string level = name.substr(name.size() - 1);
    EXPECT_EQ(made->getToolTip().rfind("Level " + level + " algorithm: ", 0), 0u) << made->getToolTip();
    EXPECT_TRUE(made->getAttributes().empty());
    ASSERT_TRUE(made->init().isOk());
    EXPECT_FALSE(made->getAttributes().empty());
    for (const auto& attribute : made->getAttributes()) EXPECT_STRNE(attribute->getToolTip(), "");
  }
}

}  // namespace
}  // namespace vexo::imaproc::filter
