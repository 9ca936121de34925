#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "VEXOCore/BaseException.h"

namespace vexo::test {

/// The message of the exception that a call throws; empty when it throws none.
template <class Exception = BaseException, class Call>
std::string failureOf(const Call& call) {
  try {
    call();
  } catch (const Exception& thrown) {
    EXPECT_NE(thrown.getMessage(), "");
    return thrown.getMessage();
  }
  return "";
}

inline testing::AssertionResult has(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "'" << part << "' is missing in '" << text << "'";
}

/// A call must fail with a message that holds all parts.
template <class Exception = BaseException, class Call>
void expectFailure(std::initializer_list<std::string> parts, const Call& call) {
  const std::string message = failureOf<Exception>(call);
  EXPECT_NE(message, "") << "nothing was thrown";
  for (const std::string& part : parts) EXPECT_TRUE(has(message, part));
}

/// Waits for what other threads must bring about; false when they do not.
template <class Condition>
bool eventually(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

}  // namespace vexo::test
