#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vexo::app {

/// The words of the call are off.
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

std::string toLower(std::string text);

/// Throws a UsageError that names the word, what it should have been, and the valid words nearest to it.
[[noreturn]] void refuseWord(const std::string& what, const std::string& word,
                             const std::vector<std::string>& valid);

/// Parses the words after the name of a command; throws a UsageError when they are off. False when they ask
/// for the help, which is then printed.
bool parseWords(CLI::App& app, const std::vector<std::string>& words);

/// Throws when something printed did not get through.
void flushOutput();

}  // namespace vexo::app
