#include "Settings.h"

#include <log4cplus/consoleappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <memory>

#include "Processors.h"
#include "VEXOCore/Action.h"
#include "VEXOCore/DataItem.h"
#include "VEXOCore/InstructionSet.h"
#include "VEXOCore/Log.h"
#include "VEXOCore/Quote.h"
#include "VEXOImageIO/ImageIO.h"
#include "VEXOProcessing/ProcessingAlgorithm.h"
#include "Words.h"

namespace vexo::app {
namespace {

void setThreadCount(const std::string& text) {
  std::uint32_t count = 0;
  if (!ScalarText<std::uint32_t>::fromText(text, count) || count == 0)
    throw UsageError("--threads: " + quote(text) + " is not a number of threads, from 1");
  try {
    core::ActionRunner::getInstance().setThreadCount(count);
  } catch (const BaseException& refused) {
    throw UsageError(std::string("--threads: ") + refused.what());
  }
}

void setLogLevel(const std::string& text) {
  const std::vector<std::string> names = {"OFF", "FATAL", "ERROR", "WARN", "INFO", "DEBUG", "TRACE"};
  const auto name = std::find_if(names.begin(), names.end(),
                                 [&](const std::string& known) { return toLower(known) == toLower(text); });
  if (name == names.end()) refuseWord("log level", text, names);
  auto logger = log4cplus::Logger::getInstance(getBaseLoggerName());
  logger.setLogLevel(log4cplus::getLogLevelManager().fromString(*name));
  if (*name == "OFF") return;
  const log4cplus::SharedAppenderPtr console(new log4cplus::ConsoleAppender(true, true));
  console->setLayout(std::make_unique<log4cplus::PatternLayout>("%-5p %c: %m%n"));
  logger.addAppender(console);
}

const core::NamedInstructionSets& findInstructionSet(const std::string& name) {
  std::vector<std::string> names;
  for (const core::NamedInstructionSets& named : core::namedInstructionSets()) {
    if (named.name == name) return named;
    names.emplace_back(named.name);
  }
  refuseWord("instruction set", name, names);
}

void addValue(CLI::App& app, const char* name, std::optional<std::string>& value, const char* type,
              const char* toolTip) {
  app.add_option_function<std::string>(
         name, [&value](const std::string& word) { value = word; }, toolTip)
      ->type_name(type);
}

/// A number of bytes, "512", or of powers of 1024: "16G"; 0 when it is none.
std::uint64_t parseBytes(std::string text) {
  const std::string suffixes = "KMGT";
  const std::size_t power = text.empty() ? std::string::npos : suffixes.find(text.back());
  if (power != std::string::npos) text.pop_back();
  std::uint64_t bytes = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, bytes);
  if (result.ec != std::errc() || result.ptr != end) return 0;
  const std::uint64_t factor = power == std::string::npos ? 1 : std::uint64_t(1) << 10 * (power + 1);
  return __builtin_mul_overflow(bytes, factor, &bytes) ? 0 : bytes;
}

}  // namespace

void addMaxImageBytes(CLI::App& app, std::optional<std::string>& word) {
  addValue(app, "--max-image-bytes", word, "N",
           "Bytes that the samples of an image file may take, with suffix K, M, G or T; by default half of "
           "the memory that this machine or its control group has");
}

void setMaxImageBytes(const std::optional<std::string>& word) {
  if (!word) return;
  const std::uint64_t bytes = parseBytes(*word);
  if (bytes == 0)
    throw UsageError("--max-image-bytes: " + quote(*word) +
                     " is not a number of bytes, from 1, such as 512M or 16G");
  image::io::setMaxImageBytes(bytes);
}

void Settings::addOptions(CLI::App& app) {
  addValue(app, "--threads", _threads, "N", "Threads to use; by default those that the machine grants");
  addValue(app, "--instruction-set", _instructionSet, "SET",
           "standard, sse2, avx, avx2, fma3_avx2 or avx512");
  addValue(app, "--log-level", _logLevel, "LEVEL", "OFF (default), FATAL, ERROR, WARN, INFO, DEBUG or TRACE");
  addMaxImageBytes(app, _maxImageBytes);
  app.add_flag("--quiet", _quiet, "No progress bar");
  app.add_flag("--dry-run", _dryRun,
               "Check the call and print geometry and type of the outputs, nothing more");
  app.add_flag("--json", _json, "Print JSON in a dry run");
  app.add_flag(
      "--explain", _explain,
      "Print which implementations the run has chosen, and why; in a dry run as far as no sample decides");
}

void Settings::check() const {
  setLogLevel(_logLevel.value_or("OFF"));
  if (_threads) setThreadCount(*_threads);
  setMaxImageBytes(_maxImageBytes);
  if (_instructionSet) findInstructionSet(*_instructionSet);
}

void Settings::forceInstructionSet() const {
  if (!_instructionSet) return;
  const processor::InstructionSetsIdentifier sets(findInstructionSet(*_instructionSet).sets);
  if (!processor::AlgorithmFunctionSelector::isSupported(sets))
    throw std::runtime_error("this machine does not offer the instruction set " + *_instructionSet);
  processor::forceInstructionSetsOfAll(sets);
}

}  // namespace vexo::app
