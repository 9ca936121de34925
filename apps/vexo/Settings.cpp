#include "Settings.h"

#include <log4cplus/consoleappender.h>
#include <log4cplus/layout.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "Processors.h"
#include "VEXOCore/Action.h"
#include "VEXOCore/DataItem.h"
#include "VEXOCore/InstructionSet.h"
#include "VEXOCore/Log.h"
#include "VEXOCore/Quote.h"
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

}  // namespace

void Settings::addOptions(CLI::App& app) {
  const auto addValue = [&](const char* name, std::optional<std::string>& value, const char* type,
                            const char* toolTip) {
    app.add_option_function<std::string>(
           name, [&value](const std::string& word) { value = word; }, toolTip)
        ->type_name(type);
  };
  addValue("--threads", _threads, "N", "Threads to use; by default those that the machine grants");
  addValue("--instruction-set", _instructionSet, "SET", "standard, sse2, avx, avx2, fma3_avx2 or avx512");
  addValue("--log-level", _logLevel, "LEVEL", "OFF (default), FATAL, ERROR, WARN, INFO, DEBUG or TRACE");
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
  if (_instructionSet) findInstructionSet(*_instructionSet);
}

void Settings::forceInstructionSet() const {
  if (!_instructionSet) return;
  const processor::InstructionSetsIdentifier sets(findInstructionSet(*_instructionSet).sets);
  if (!processor::AlgorithmFunctionSelector::isSupported(sets))
    throw std::runtime_error("this machine does not offer the instruction set " + *_instructionSet);
  for (const auto& processor : createProcessors(true))
    if (auto* algorithm = dynamic_cast<processor::BaseProcessingAlgorithm*>(processor.get()))
      algorithm->forceInstructionSets(sets);
}

}  // namespace vexo::app
