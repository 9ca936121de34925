#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <new>

#include "Commands.h"
#include "VEXOCore/Quote.h"
#include "Watch.h"
#include "Words.h"

namespace vexo::app {
namespace {

constexpr struct {
  const char* name;
  void (*run)(const WordList& words);
} commands[] = {
    {"list", listCommand}, {"describe", describeCommand}, {"run", runCommand}, {"info", infoCommand}};

constexpr char help[] =
    "2d and 3d image filters for microscopy and materials science\n"
    "\n"
    "  vexo list [WORD]                 processors by name, with their tool tips\n"
    "  vexo describe PROCESSOR          attributes of a processor: name, kind, type, tool tip\n"
    "  vexo run PROCESSOR [--ATTRIBUTE VALUE]... [options]\n"
    "  vexo info IMAGE                  geometry, sample type, minimum, maximum, mean, pixel size\n"
    "  vexo COMMAND --help              more about a command\n"
    "  vexo run PROCESSOR --help        the attributes as options\n"
    "  vexo --version | --help\n"
    "\n"
    "Exit status: 0 done, 1 the run failed, 2 the words of the call are off, 128 + N ended by signal N.\n";

void dispatch(const WordList& words) {
  const std::string& name = words.front();
  const bool alone = name == "--help" || name == "-h" || name == "--version";
  if (alone && words.size() > 1) throw UsageError("unexpected word " + quote(words[1]) + " after " + name);
  if (name == "--help" || name == "-h") {
    std::cout << help;
  } else if (name == "--version") {
    std::cout << "vexo " VEXO_VERSION "\n";
  } else {
    WordList names;
    for (const auto& command : commands) {
      if (name == command.name) return command.run(WordList(words.begin() + 1, words.end()));
      names.emplace_back(command.name);
    }
    if (name[0] == '-') names = {"--help", "--version"};
    refuseWord(name[0] == '-' ? "option" : "command", name, names);
  }
}

/// One line, whatever the message holds.
int report(const std::string& message, int status) {
  std::cerr << "vexo: " << escapeControls(message) << std::endl;
  return status;
}

int callMain(int argc, char** argv) {
  try {
    const WordList words(argv + std::min(argc, 1), argv + argc);
    if (words.empty()) {
      std::cerr << help;
      return 2;
    }
    dispatch(words);
    flushOutput();
    return 0;
  } catch (const UsageError& error) {
    return report(error.what(), 2);
  } catch (const Interrupted& interrupted) {
    return report(interrupted.what(), 128 + interrupted.getSignal());
  } catch (const std::bad_alloc&) {
    // At once: what libraries do when they end asks for memory, too.
    std::fputs("vexo: out of memory\n", stderr);
    std::_Exit(1);
  } catch (const std::exception& error) {
    return report(error.what(), 1);
  } catch (...) {
    return report("unknown failure", 1);
  }
}

}  // namespace
}  // namespace vexo::app

int main(int argc, char** argv) {
  // Were one of the standard streams closed, the next file that is opened would take its place.
  for (int descriptor = 0; descriptor >= 0 && descriptor <= STDERR_FILENO;)
    if (descriptor = open("/dev/null", O_RDONLY); descriptor > STDERR_FILENO) close(descriptor);
  std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large is a failed write
  return vexo::app::callMain(argc, argv);
}
