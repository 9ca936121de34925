// A small fuzzing engine for compilers that bring none:
//
//   PROGRAM [--seconds N] [--runs N] [--seed S] FILE_OR_FOLDER...
//
// Runs every file, then changes of randomly chosen ones for so many seconds or runs. The input at work is
// always in the file crash-PROGRAM of the working folder: it is left behind when the process dies.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;
using Input = std::vector<std::uint8_t>;

constexpr std::size_t largestInput = 8192;
/// An input that takes longer than that is a find, too.
constexpr unsigned mostSeconds = 60;

struct Options {
  double seconds = 0;
  std::uint64_t runs = 0;
  std::uint32_t seed = std::random_device{}();
  std::vector<fs::path> paths;
};

class Engine {
public:
  explicit Engine(const fs::path& crashFile)
      : _crashFile(crashFile), _descriptor(open(crashFile.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0644)) {
    if (_descriptor < 0) {
      std::perror(crashFile.c_str());
      std::exit(2);
    }
  }
  ~Engine() {
    close(_descriptor);
    fs::remove(_crashFile);
  }

  void run(const Input& input) {
    if (pwrite(_descriptor, input.data(), input.size(), 0) != static_cast<ssize_t>(input.size()) ||
        ftruncate(_descriptor, static_cast<off_t>(input.size())) != 0) {
      std::perror(_crashFile.c_str());
      std::exit(2);
    }
    alarm(mostSeconds);
    // Memory of its own, of exactly this size, so that a sanitizer sees its end.
    const Input copy(input);
    LLVMFuzzerTestOneInput(copy.data(), copy.size());
    alarm(0);
    ++_runs;
  }
  std::uint64_t getRuns() const { return _runs; }

private:
  const fs::path _crashFile;
  const int _descriptor;
  std::uint64_t _runs = 0;
};

class Mutator {
public:
  Mutator(std::vector<Input> corpus, std::uint32_t seed) : _corpus(std::move(corpus)), _random(seed) {}

  Input make() {
    Input input = any();
    for (std::size_t changes = 1 + below(below(4) == 0 ? 16 : 4); changes > 0; --changes) change(input);
    if (input.size() > largestInput) input.resize(largestInput);
    return input;
  }

private:
  std::size_t below(std::size_t count) { return _random() % count; }
  const Input& any() { return _corpus[below(_corpus.size())]; }

  void change(Input& input) {
    const std::size_t at = below(input.size() + 1);
    const std::size_t length = std::min(input.size() - at, 1 + below(below(4) == 0 ? 256 : 8));
    const auto here = input.begin() + static_cast<std::ptrdiff_t>(at);
    const auto end = here + static_cast<std::ptrdiff_t>(length);
    switch (below(9)) {
      case 0:
        if (length > 0) *here ^= static_cast<std::uint8_t>(1u << below(8));
        break;
      case 1:
        if (length > 0) *here = static_cast<std::uint8_t>(_random());
        break;
      case 2:
        if (length > 0) *here = static_cast<std::uint8_t>(*here + below(5) - 2);
        break;
      case 3:
        input.erase(here, end);
        break;
      case 4: {
        const Input more(1 + below(16), static_cast<std::uint8_t>(_random()));
        input.insert(here, more.begin(), more.end());
        break;
      }
      case 5:
        writeNumber(input, at);
        break;
      case 6: {  // a piece of itself elsewhere
        const Input piece(here, end);
        const std::size_t to = below(input.size() + 1);
        if (below(2) == 0)
          input.insert(input.begin() + static_cast<std::ptrdiff_t>(to), piece.begin(), piece.end());
        else
          std::copy_n(piece.begin(), std::min(piece.size(), input.size() - to),
                      input.begin() + static_cast<std::ptrdiff_t>(to));
        break;
      }
      case 7: {  // goes on as another
        const Input& other = any();
        const std::size_t from = std::min(at, other.size());
        input.erase(here, input.end());
        input.insert(input.end(), other.begin() + static_cast<std::ptrdiff_t>(from), other.end());
        break;
      }
      default: {  // a piece of another
        const Input& other = any();
        const std::size_t from = below(other.size() + 1);
        const std::size_t size = std::min({length, other.size() - from});
        std::copy_n(other.begin() + static_cast<std::ptrdiff_t>(from), size, here);
      }
    }
  }

  /// A number at which programs err, of 1 to 8 bytes in either order.
  void writeNumber(Input& input, std::size_t at) {
    static constexpr std::uint64_t numbers[] = {0,
                                                1,
                                                2,
                                                3,
                                                0x7f,
                                                0x80,
                                                0xff,
                                                0x100,
                                                0x7fff,
                                                0x8000,
                                                0xffff,
                                                0x10000,
                                                0x7fffffff,
                                                0x80000000,
                                                0xffffffff,
                                                0x100000000,
                                                0x7fffffffffffffff,
                                                0x8000000000000000,
                                                0xffffffffffffffff};
    const std::uint64_t number = numbers[below(std::size(numbers))];
    const std::size_t size = std::size_t(1) << below(4);
    const bool bigEndian = below(2) == 0;
    for (std::size_t i = 0; i < size && at + i < input.size(); ++i)
      input[at + i] = static_cast<std::uint8_t>(number >> 8 * (bigEndian ? size - 1 - i : i));
  }

  const std::vector<Input> _corpus;
  std::mt19937 _random;
};

Options readOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const bool isOption = word == "--seconds" || word == "--runs" || word == "--seed";
    if (isOption && i + 1 < argc) {
      const std::string value = argv[++i];
      if (word == "--seconds") options.seconds = std::stod(value);
      if (word == "--runs") options.runs = std::stoull(value);
      if (word == "--seed") options.seed = static_cast<std::uint32_t>(std::stoul(value));
    } else if (fs::exists(word)) {
      options.paths.emplace_back(word);
    } else {
      std::fprintf(stderr, "no such file or folder: %s\n", word.c_str());
      std::exit(2);
    }
  }
  return options;
}

std::vector<Input> readCorpus(const std::vector<fs::path>& paths) {
  std::vector<fs::path> files;
  for (const fs::path& path : paths)
    if (fs::is_directory(path))
      for (const auto& entry : fs::recursive_directory_iterator(path)) files.push_back(entry.path());
    else
      files.push_back(path);
  std::sort(files.begin(), files.end());
  std::vector<Input> corpus;
  for (const fs::path& path : files) {
    std::ifstream file(path, std::ios::binary);
    corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return corpus;
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = readOptions(argc, argv);
  std::vector<Input> corpus = readCorpus(options.paths);
  if (corpus.empty()) {
    std::fprintf(stderr, "there is no file to begin with\n");
    return 2;
  }
  const fs::path name = fs::path(argv[0]).filename();
  Engine engine("crash-" + name.string());
  std::printf("%s: seed %u, %zu files, a find is left in %s\n", name.c_str(), options.seed, corpus.size(),
              fs::absolute("crash-" + name.string()).c_str());
  std::fflush(stdout);

  const auto begin = std::chrono::steady_clock::now();
  const auto elapsed = [&] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  };
  for (const Input& input : corpus) engine.run(input);
  const std::uint64_t replayed = engine.getRuns();
  Mutator mutator(std::move(corpus), options.seed);
  while (engine.getRuns() - replayed < options.runs || elapsed() < options.seconds)
    engine.run(mutator.make());
  std::printf("%s: %llu executions, %.0f per second\n", name.c_str(),
              static_cast<unsigned long long>(engine.getRuns()),
              static_cast<double>(engine.getRuns()) / std::max(elapsed(), 1e-3));
}
