#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace vexo::app {

/// The option that limits what image files may decode to, and what it does; throws a UsageError when its word
/// is off.
void addMaxImageBytes(CLI::App& app, std::optional<std::string>& word);
void setMaxImageBytes(const std::optional<std::string>& word);

/// The options of a run that are no attributes.
class Settings {
public:
  void addOptions(CLI::App& app);
  /// Throws a UsageError when one of them is off. The number of threads, the logging and the limit of
  /// bytes apply from then on.
  void check() const;
  /// Makes all kernels use the wanted instruction set; throws when this machine does not offer it.
  void forceInstructionSet() const;

  bool isQuiet() const { return _quiet; }
  bool isDryRun() const { return _dryRun; }
  bool isJson() const { return _json; }
  bool isExplained() const { return _explain; }

private:
  bool _quiet = false, _dryRun = false, _json = false, _explain = false;
  std::optional<std::string> _threads, _instructionSet, _logLevel, _maxImageBytes;
};

}  // namespace vexo::app
