#include <gtest/gtest.h>
#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <filesystem>
#include <map>

#include "VEXOCore/InstructionSet.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl1.h"
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

TEST(FilteringMessages, WhatAFilterRefusesIsOfItsModule) {
  const log4cplus::helpers::SharedObjectPtr<Recorder> recorder(new Recorder);
  log4cplus::Logger base = log4cplus::Logger::getInstance("vexo");
  base.addAppender(log4cplus::SharedAppenderPtr(recorder.get()));
  const auto image = image::Image::create({4, 4}, image::eImageBufferType::UInt8);
  const auto other = image::Image::create({4, 4}, image::eImageBufferType::UInt16);
  const auto larger = image::Image::create({5, 4}, image::eImageBufferType::UInt8);
  // By a rule, before a run; by the frame, for a filter of any module.
  EXPECT_THROW(despeckleFilter2dImg(image, 1, 1, 2.0, other), VEXOIPLFilteringException);
  EXPECT_THROW(logic::maskImgImg(image, image, image, larger), logic::VEXOIPLLogicalException);
  try {
    meanSmoothing2dImg(nullptr, 1, 1);
    FAIL();
  } catch (const VEXOIPLFilteringException&) {
    FAIL() << "an attribute is the frame's";
  } catch (const BaseException&) {
  }
  base.removeAppender(log4cplus::SharedAppenderPtr(recorder.get()));
  ASSERT_EQ(recorder->lines.size(), 3u);
  const char* const loggers[] = {"vexo.VEXOIPLFiltering|", "vexo.VEXOIPLLogical|", "vexo.VEXOProcessing|"};
  for (int i = 0; i < 3; ++i) EXPECT_EQ(recorder->lines[i].rfind(loggers[i], 0), 0u) << recorder->lines[i];
}

// Another cut gives the same bits at another speed: only here it is seen.
TEST(FilteringRegistration, KernelsCutAsTheirWorkAsks) {
  const std::map<std::string, std::pair<std::size_t, std::size_t>> unusual = {
      {"Bilateral3dImgLvl3", {16, 4}},
      {"Convolution3dImgLvl3", {16, 4}},
      {"GenericMedian2dImgLvl3", {16, 4}},
      {"GenericMedian3dImgLvl3", {4, 1}},
      {"HistoMedian3dImgLvl3", {4, 1}},
      {"HistoO1MedianXStrip2dImgLvl3", {256, 8}},
      {"HistoOkMedian2dImgLvl3", {16, 4}},
      {"MaskImgImg3dLvl3", {4, 1}},
      {"MeanSmoothing3dMaskImgLvl3", {16, 8}},
      {"MeanSmoothingZ3dImgLvl3", {16, 8}},
      {"PearsonColocalization3dImgLvl3", {4, 1}},
      {"SeparatedBilateralX3dImgLvl3", {4, 1}},
      {"SeparatedBilateralY3dImgLvl3", {4, 1}},
      {"StatsMsr3dLvl3", {1, 1}}};
  for (const std::string& name : processor::ProcessorFactory::getTypeNames()) {
    const auto made = processor::ProcessorFactory::createProcessor(name);
    const auto found = unusual.find(made->getObjectName());
    const auto& policy = made->getClassInfo().dispatchPolicy;
    const std::pair<std::size_t, std::size_t> cut(policy.minStripLength, policy.lengthPerMargin);
    EXPECT_EQ(cut, found == unusual.end() ? (std::pair<std::size_t, std::size_t>(64, 8)) : found->second)
        << name;
  }
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
