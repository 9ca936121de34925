#include "VEXOCore/LogMessage.h"

#include <gtest/gtest.h>
#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <thread>

#include "VEXOCore/Log.h"

enum class eTestMessage { Two = 2, Broken = 3, Unknown = 9 };

namespace vexo {
template <>
struct MessageMap<eTestMessage> {
  static LogMessageManager& manager() { return LogMessageManager::getInstance("LogMessageTest"); }
  static const std::vector<std::pair<eTestMessage, const char*>>& messages() {
    static const std::vector<std::pair<eTestMessage, const char*>> table = {
        {eTestMessage::Two, "%2% before %1%"}, {eTestMessage::Broken, "%1"}};
    return table;
  }
};
}  // namespace vexo

namespace {

using namespace vexo;

const char* const unformatted = "Exception thrown while processing message";

struct Unprintable {};
std::ostream& operator<<(std::ostream&, const Unprintable&) {
  throw std::runtime_error("unprintable");
}

TEST(LogMessage, WhatCannotBeFormattedNeverThrows) {
  EXPECT_EQ(formatMessage(eTestMessage::Two), unformatted);
  EXPECT_EQ(formatMessage(eTestMessage::Two, 1), unformatted);
  EXPECT_EQ(formatMessage(eTestMessage::Two, 1, 2, 3), unformatted);
  EXPECT_EQ(formatMessage(eTestMessage::Two, 1, Unprintable()), unformatted);
  EXPECT_EQ(formatMessage(eTestMessage::Broken, 1), unformatted);
  EXPECT_EQ(formatMessage(eTestMessage::Unknown), unformatted);
  LogMessageFormater formater(MessageMap<eTestMessage>::manager());
  EXPECT_EQ(formater.str(), unformatted);
  formater.setMsgId(eTestMessage::Unknown) % 1;
  EXPECT_EQ((formater.setMsgId(eTestMessage::Two) % 1 % 2).str(), "2 before 1") << "usable again";
}

TEST(LogMessage, OnePairHasOneText) {
  LogMessageManager manager;
  EXPECT_TRUE(manager.addMessage("a", 1, "text"));
  EXPECT_TRUE(manager.addMessage("a", 1, "text"));
  EXPECT_TRUE(manager.addMessage("a", 2, "other"));
  EXPECT_TRUE(manager.addMessage("b", 1, "other"));
  const BoolResult refused = manager.addMessage("a", 1, "other");
  EXPECT_FALSE(refused);
  EXPECT_NE(refused.getMessage().find("text"), std::string::npos);
  EXPECT_EQ(manager.getMessage("a", 1), "text");
  EXPECT_EQ(manager.getMessage("a", 3), "");
}

TEST(LogMessage, ManagersAreOnePerModuleForAllThreads) {
  std::vector<LogMessageManager*> found(8);
  std::vector<std::thread> threads;
  for (auto& manager : found)
    threads.emplace_back([&manager] {
      manager = &LogMessageManager::getInstance("shared by threads");
      manager->addMessage("a", 1, "text");
    });
  for (std::thread& thread : threads) thread.join();
  for (LogMessageManager* manager : found) EXPECT_EQ(manager, found[0]);
  EXPECT_NE(found[0], &LogMessageManager::getInstance("another"));
}

/// Keeps the events that are logged.
struct Recorder : log4cplus::Appender {
  ~Recorder() override { destructorImpl(); }
  void close() override {}
  void append(const log4cplus::spi::InternalLoggingEvent& event) override { events.push_back(event); }
  std::vector<log4cplus::spi::InternalLoggingEvent> events;
};

TEST(Log, RaisingLogsOnceAndTellsThePlaceUnlessItIsSilent) {
  const log4cplus::helpers::SharedObjectPtr<Recorder> recorder(new Recorder);
  log4cplus::Logger logger = getModuleLogger("LogTest");
  logger.addAppender(log4cplus::SharedAppenderPtr(recorder.get()));
  const unsigned line = __LINE__ + 2;
  try {
    raiseMessage<UnHandleException>(logger, VEXO_HERE, eTestMessage::Two, 1, "b");
  } catch (const UnHandleException& failure) {
    EXPECT_STREQ(failure.what(), "b before 1");
    EXPECT_EQ(failure.getLine(), line);
    EXPECT_NE(failure.getFile().find("LogMessageTest.cpp"), std::string::npos);
    EXPECT_NE(failure.getFunction().find("RaisingLogsOnceAndTellsThePlace"), std::string::npos);
  }
  logger.setLogLevel(log4cplus::OFF_LOG_LEVEL);
  EXPECT_THROW(raiseError(VEXO_HERE, "LogTest", "value ", 3), BaseException);
  logger.setLogLevel(log4cplus::NOT_SET_LOG_LEVEL);
  logger.removeAppender(log4cplus::SharedAppenderPtr(recorder.get()));
  ASSERT_EQ(recorder->events.size(), 1u);
  const auto& event = recorder->events[0];
  EXPECT_EQ(event.getMessage(), "b before 1");
  EXPECT_EQ(event.getLogLevel(), log4cplus::ERROR_LOG_LEVEL);
  EXPECT_EQ(event.getLoggerName(), getBaseLoggerName() + ".LogTest");
  EXPECT_EQ(event.getLine(), static_cast<int>(line));
}

}  // namespace
