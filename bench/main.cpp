// Runs every case with one thread and with two: ours, memcpy and the peer's, one after another. Prints
// medians.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <thread>

#include "Bench.h"
#include "VEXOCore/Action.h"
#include "VEXOCore/Buffer.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"

namespace vexo::bench {
namespace {

using image::eImageBufferType;
using image::Image;
using image::ImageGeometry;

std::vector<Case>& cases() {
  static std::vector<Case> all;
  return all;
}

std::size_t sampleCount(const ImageGeometry& g) {
  return g.x * g.y * g.z * g.c * g.t;
}

boost::shared_ptr<Image> randomImage(const ImageGeometry& geometry, eImageBufferType type, unsigned largest) {
  const auto result = Image::create(geometry, type);
  std::mt19937 random(1);
  image::visitBufferType(type, [&](auto zero) {
    using T = decltype(zero);
    const std::size_t count = sampleCount(geometry);
    auto* samples = static_cast<T*>(result->getData());
    for (std::size_t i = 0; i < count; ++i) samples[i] = static_cast<T>(random() & largest);
  });
  return result;
}

std::size_t byteSize(const Image& image) {
  return sampleCount(image.getGeometry()) * getSampleSize(image.getBufferType());
}

#ifdef VEXO_HAS_OPENCV
cv::Mat asMat(Image& image) {
  static const std::map<eImageBufferType, int> depths = {{eImageBufferType::UInt8, CV_8U},
                                                         {eImageBufferType::UInt16, CV_16U},
                                                         {eImageBufferType::Int16, CV_16S},
                                                         {eImageBufferType::Real32, CV_32F}};
  return cv::Mat(static_cast<int>(image.getSizeY()), static_cast<int>(image.getSizeX()),
                 depths.at(image.getBufferType()), image.getData(),
                 static_cast<std::size_t>(image.getStrides().y));
}
#endif

void setThreads(int count) {
  core::ActionRunner::getInstance().setThreadCount(static_cast<std::size_t>(count));
#ifdef VEXO_HAS_OPENCV
  cv::setNumThreads(count);
#endif
}

/// memcpy of a whole image, by as many threads.
void copyImage(const Image& from, Image& to, int threads) {
  const std::size_t bytes = byteSize(from), part = bytes / static_cast<std::size_t>(threads);
  std::vector<std::thread> others;
  const auto copyPart = [&](std::size_t i) {
    std::memcpy(static_cast<char*>(to.getData()) + i * part,
                static_cast<const char*>(from.getData()) + i * part, part);
  };
  for (int i = 1; i < threads; ++i) others.emplace_back(copyPart, static_cast<std::size_t>(i));
  copyPart(0);
  for (auto& other : others) other.join();
}

/// Medians in milliseconds by benchmark name.
class MedianReporter : public benchmark::BenchmarkReporter {
public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      if (run.run_type == Run::RT_Iteration)
        _times[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
  }
  double median(const std::string& name) {
    auto& times = _times[name];
    if (times.empty()) return 0;
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                     times.end());
    return times[times.size() / 2];
  }

private:
  std::map<std::string, std::vector<double>> _times;
};

std::string typesOf(const Case& line) {
  const std::string in = toString(line.type);
  return line.outType ? in + " to " + toString(*line.outType) : in;
}

std::string caseName(const Case& line, int threads, const char* who) {
  return line.filter + "/" + typesOf(line) + "/" + std::to_string(threads) + "/" + who;
}

template <class Work>
void registerWork(const std::string& name, int threads, Work work) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [threads, work](benchmark::State& state) {
                                 setThreads(threads);
                                 for (auto _ : state) work();
                               })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(0.05)
      ->Repetitions(9);
}

/// Images are made when a benchmark first needs them and shared by all lines of the same type and size.
struct Pair {
  boost::shared_ptr<Image> in, out;
};
Pair images(const ImageGeometry& geometry, eImageBufferType type,
            std::optional<eImageBufferType> outType = std::nullopt, unsigned largest = 0xffff) {
  static std::map<std::string, boost::shared_ptr<Image>> made;
  const auto imageOf = [&](eImageBufferType t, const char* role) {
    auto& result = made[toString(geometry) + toString(t) + role + std::to_string(largest)];
    if (!result) result = randomImage(geometry, t, largest);
    return result;
  };
  return {imageOf(type, "in"), imageOf(outType.value_or(type), "out")};
}

void registerCases() {
  for (const Case& line : cases())
    for (const int threads : {1, 2}) {
      registerWork(caseName(line, threads, "ours"), threads, [line] {
        const Pair pair = images(line.geometry, line.type, line.outType, line.largest);
        line.ours(pair.in, pair.out);
      });
      registerWork(caseName(line, threads, "memcpy"), threads, [line, threads] {
        const Pair pair = images(line.geometry, line.type);
        copyImage(*pair.in, *pair.out, threads);
      });
#ifdef VEXO_HAS_OPENCV
      if (line.peer)
        registerWork(caseName(line, threads, "peer"), threads, [line] {
          const Pair pair = images(line.geometry, line.type, line.outType, line.largest);
          cv::Mat in = asMat(*pair.in), out = asMat(*pair.out);
          line.peer(in, out);
        });
#endif
    }
}

constexpr char smallCall[] = "small call", givenOutput[] = "given output", createdOutput[] = "created output";

/// What a call costs besides the work: on a tiny image, and when it creates its output.
void registerOverheads() {
  registerWork(smallCall, 2, [] {
    const Pair pair = images({16, 16}, eImageBufferType::Real32);
    imaproc::filter::meanSmoothing2dImg(pair.in, 1, 1, pair.out);
  });
  registerWork(givenOutput, 1, [] {
    const Pair pair = images({4096, 4096}, eImageBufferType::Real32);
    imaproc::filter::meanSmoothing2dImg(pair.in, 5, 5, pair.out);
  });
  registerWork(createdOutput, 1, [] {
    imaproc::filter::meanSmoothing2dImg(images({4096, 4096}, eImageBufferType::Real32).in, 5, 5);
  });
}

/// A figure of /proc/self/status in MiB.
double statusMiB(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.rfind(key + ":", 0) == 0) return std::stod(line.substr(key.size() + 1)) / 1024;
  return 0;
}

/// By how much a call raises the peak of the process beyond the images, which exist and are touched before
/// it.
void printMemory() {
  for (const std::uint32_t half : {1u, 25u})
    for (const int threads : {1, 2}) {
      setThreads(threads);
      const Pair pair = images({4096, 4096}, eImageBufferType::Real32);
      const auto call = [&] { imaproc::filter::meanSmoothing2dImg(pair.in, half, half, pair.out); };
      call();  // threads and their stacks exist
      setRecycledMemoryLimit(0);
      malloc_trim(0);  // what the call before took is given back, and counts again
      std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts anew
      const double before = statusMiB("VmRSS");
      call();
      std::printf("memory of a call beyond its images, half %u, %d threads: %.1f MiB\n", half, threads,
                  statusMiB("VmHWM") - before);
      setRecycledMemoryLimit(std::size_t(256) << 20);
    }
}

std::string processorName() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);)
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  return "unknown processor";
}

bool hasRun(MedianReporter& medians, const Case& line) {
  return medians.median(caseName(line, 1, "ours")) > 0;
}

/// Nanoseconds per sample of the peers from SciPy and NumPy, by case and type, for the lines that have run,
/// from a child process; empty where it cannot run.
std::map<std::string, double> timeScipyPeers(MedianReporter& medians) {
  std::string words;
  for (const Case& line : cases())
    if (hasRun(medians, line)) words += " '" + line.filter + "/" + toString(line.type) + "'";
  std::map<std::string, double> times;
  const std::string command = "/usr/bin/python3 " VEXO_SCIPY_PEERS_SCRIPT + words + " 2>/dev/null";
  std::unique_ptr<FILE, int (*)(FILE*)> child(popen(command.c_str(), "r"), pclose);
  std::string text;
  for (int c = 0; child && (c = std::fgetc(child.get())) != EOF;) text += static_cast<char>(c);
  const auto json = nlohmann::json::parse(text, nullptr, false);
  if (json.is_object())
    for (const auto& [name, nanoseconds] : json.items()) times[name] = nanoseconds.get<double>();
  return times;
}

/// What the time of a line, with one thread, is compared with; 0 when there is nothing.
double peerTime(MedianReporter& medians, const Case& line, const std::map<std::string, double>& scipyPeers) {
  const auto samples = static_cast<double>(sampleCount(line.geometry));
  if (line.yardstick)
    for (const Case& other : cases())
      if (other.filter == line.yardstick->filter && other.type == line.yardstick->type)
        return medians.median(caseName(other, 1, "ours")) * line.yardstick->work * samples /
               static_cast<double>(sampleCount(other.geometry));
  const auto found = scipyPeers.find(line.filter + "/" + toString(line.type));
  return found == scipyPeers.end() ? medians.median(caseName(line, 1, "peer"))
                                   : found->second * samples * 1e-6;
}

void printTable(MedianReporter& medians) {
  const std::map<std::string, double> scipyPeers = timeScipyPeers(medians);
  std::printf("%s, %u processors\n\n", processorName().c_str(), std::thread::hardware_concurrency());
  std::printf(
      "| filter | type | size | threads | ours ms | peer ms | ours / peer | ours / memcpy | 1 thread / this "
      "|\n");
  std::printf("|---|---|---|---|---|---|---|---|---|\n");
  for (const Case& line : cases())
    for (const int threads : {1, 2}) {
      const double ours = medians.median(caseName(line, threads, "ours"));
      if (ours == 0) continue;
      const double peer = threads == 1 ? peerTime(medians, line, scipyPeers)
                                       : medians.median(caseName(line, threads, "peer"));
      const double copy = medians.median(caseName(line, threads, "memcpy"));
      const double one = medians.median(caseName(line, 1, "ours"));
      std::printf("| %s | %s | %s | %d | %.2f | ", line.filter.c_str(), typesOf(line).c_str(),
                  toString(line.geometry).c_str(), threads, ours);
      if (peer > 0)
        std::printf("%.2f | %.2f | ", peer, ours / peer);
      else
        std::printf("- | - | ");
      std::printf("%.2f | %.2f |\n", ours / copy, one / ours);
    }
  const auto printRatio = [&](const char* what, const std::string& above, const std::string& below) {
    const double first = medians.median(above), second = medians.median(below);
    if (first > 0 && second > 0) std::printf("%s: %.2f\n", what, first / second);
  };
  std::printf("\n");
  printRatio("memcpy of 4096 x 4096 float32, 1 thread / 2 threads", "mean, half 5/float32/1/memcpy",
             "mean, half 5/float32/2/memcpy");
  printRatio("mean uint8, half 25 / half 1", "mean, half 25/uint8/1/ours", "mean, half 1/uint8/1/ours");
  printRatio("mean float32, half 25 / half 1", "mean, half 25/float32/1/ours", "mean, half 1/float32/1/ours");
  printRatio("a call that creates its 4096 x 4096 float32 output / one that is given it", createdOutput,
             givenOutput);
  if (const double small = medians.median(smallCall); small > 0)
    std::printf("a call on a 16 x 16 image: %.1f microseconds\n", 1e3 * small);
}

}  // namespace

AddCase::AddCase(Case line) {
  cases().push_back(std::move(line));
}

}  // namespace vexo::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  vexo::bench::registerCases();
  vexo::bench::registerOverheads();
  vexo::bench::MedianReporter medians;
  benchmark::RunSpecifiedBenchmarks(&medians);
  vexo::bench::printTable(medians);
  vexo::bench::printMemory();
}
