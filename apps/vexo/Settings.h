#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace vexo::app {

/// The options of a run that are no attributes.
class Settings {
public:
  void addOptions(CLI::App& app);
  /// Throws a UsageError when one of them is off. The number of threads and the logging apply from then on.
  void check() const;
  /// Makes all kernels use the wanted instruction set; throws when this machine does not offer it.
  void forceInstructionSet() const;

  bool isQuiet() const { return _quiet; }
  bool isDryRun() const { return _dryRun; }
  bool isJson() const { return _json; }
  bool isExplained() const { return _explain; }

private:
  bool _quiet = false, _dryRun = false, _json = false, _explain = false;
  std::optional<std::string> _threads, _instructionSet, _logLevel;
};

}  // namespace vexo::app
