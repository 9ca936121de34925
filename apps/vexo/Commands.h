#pragma once

#include <string>
#include <vector>

namespace vexo::app {

using WordList = std::vector<std::string>;

// The commands. Each gets the words after its name and throws what made it fail: a UsageError when the words
// are off.
void listCommand(const WordList& words);
void describeCommand(const WordList& words);
void runCommand(const WordList& words);
void infoCommand(const WordList& words);

}  // namespace vexo::app
