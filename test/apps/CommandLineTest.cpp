#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>

#include "VEXOCore/InstructionSet.h"
#include "VEXOImageIO/ImageIO.h"
#include "tools/ImageChecks.h"
#include "tools/Readme.h"

namespace vexo {
namespace {

namespace fs = std::filesystem;
using image::eImageBufferType;
using image::Image;
using image::ImageGeometry;
using Json = nlohmann::json;

std::string readText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}
void writeText(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

/// What a call of the program answered.
struct Answer {
  int status;
  std::string output, errors;
};

/// Calls the program in a folder of its own, which holds "in.tif" (37 x 150, 8 bits) and "real.tif" (the same
/// in 32-bit float).
class CommandLineTest : public testing::Test {
protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "vexo-cli-XXXXXX").string();
    ASSERT_NE(nullptr, mkdtemp(name.data()));
    folder = name;
    input = test::rangeImage({37, 150}, eImageBufferType::UInt8, 0, 255, 1);
    const auto real = test::rangeImage({37, 150}, eImageBufferType::Real32, 0, 255, 1);
    image::io::writeImage(*input, folder / "in.tif");
    image::io::writeImage(*real, folder / "real.tif");
  }
  void TearDown() override { fs::remove_all(folder); }

  /// `words` as a shell takes them.
  Answer call(const std::string& words, const std::string& standardOutput = "stdout.txt") const {
    const std::string command = "cd '" + folder.string() + "' && '" VEXO_PROGRAM "' " + words + " >" +
                                standardOutput + " 2>stderr.txt </dev/null";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readText(folder / "stdout.txt"),
            readText(folder / "stderr.txt")};
  }
  void expectDone(const std::string& words) const {
    const Answer answer = call(words);
    EXPECT_EQ(0, answer.status) << words << '\n' << answer.errors;
    EXPECT_EQ("", answer.output + answer.errors) << words;
  }
  /// One line that says what is wrong, and nothing else.
  void expectRefused(int status, const std::string& words, const std::string& why) const {
    const Answer answer = call(words);
    EXPECT_EQ(status, answer.status) << words << '\n' << answer.errors;
    EXPECT_EQ("", answer.output) << words;
    EXPECT_EQ(0u, answer.errors.rfind("vexo: ", 0)) << words;
    EXPECT_EQ(answer.errors.size() - 1, answer.errors.find('\n')) << words;
    EXPECT_TRUE(test::has(answer.errors, why)) << words;
  }
  Json callJson(const std::string& words) const {
    const Answer answer = call(words);
    EXPECT_EQ(0, answer.status) << words << '\n' << answer.errors;
    return Json::parse(answer.output);
  }

  /// The file must hold the mean of 5 x 7 samples around each one.
  void expectMean(const std::string& file, eImageBufferType type, double tolerance) const {
    const auto image = image::io::readImage(folder / file);
    ASSERT_EQ(type, image->getBufferType());
    ASSERT_EQ(toString(input->getGeometry()), toString(image->getGeometry()));
    test::forEachSample(image->getGeometry(), [&](std::size_t x, std::size_t y, auto...) {
      double sum = 0;
      for (std::ptrdiff_t dy = -3; dy <= 3; ++dy)
        for (std::ptrdiff_t dx = -2; dx <= 2; ++dx)
          sum += test::getBorderSample(*input, *image::mirorBorder2d(), std::ptrdiff_t(x) + dx,
                                       std::ptrdiff_t(y) + dy);
      ASSERT_NEAR(sum / 35, test::getSample(*image, x, y), tolerance) << x << ", " << y;
    });
  }

  fs::path folder;
  boost::shared_ptr<Image> input;
};

const std::string mean = "run MeanSmoothing2dImg --InHalfKnlSizeX 2 --InHalfKnlSizeY=3 ";

TEST_F(CommandLineTest, RunsAProcessor) {
  expectDone(mean + "--InImg in.tif --OutImg out.tif");
  expectMean("out.tif", eImageBufferType::UInt8, 0.51);
  expectDone(mean + "--InImg in.tif --OutImg real_out.tif,type=float32 --quiet");
  expectMean("real_out.tif", eImageBufferType::Real32, 1e-3);
  // Every form of the name, a value from a file, another format.
  writeText(folder / "two.txt", "2\n");
  for (const char* name : {"MeanSmoothing2dImgLvl1", "vexo::imaproc::filter::MeanSmoothing2dImg"}) {
    expectDone("run " + std::string(name) +
               " --InHalfKnlSizeX @two.txt --InHalfKnlSizeY 3 --InImg in.tif --OutImg out.png");
    expectMean("out.png", eImageBufferType::UInt8, 0.51);
    fs::remove(folder / "out.png");
  }
  // Last, because it replaces the input.
  expectDone(mean + "--InImg in.tif --OutImg in.tif");
  EXPECT_EQ(readText(folder / "out.tif"), readText(folder / "in.tif"));
}

TEST_F(CommandLineTest, ResultDependsNeitherOnThreadsNorOnInstructionSets) {
  const std::string run = mean + "--InImg real.tif --OutImg out.tif ";
  expectDone(run);
  const std::string expected = readText(folder / "out.tif");
  for (const char* threads : {"1", "3"}) {
    expectDone(run + "--threads " + threads);
    EXPECT_EQ(expected, readText(folder / "out.tif")) << threads;
  }
  for (const auto& [name, sets] : core::namedInstructionSets()) {
    const std::string forced = run + "--instruction-set " + name;
    bool available = true;
    for (const eInstructionSet set : sets) available = available && core::isAvailable(set);
    fs::remove(folder / "out.tif");
    if (!available) {
      expectRefused(1, forced, name);
      continue;
    }
    expectDone(forced);
    EXPECT_EQ(expected, readText(folder / "out.tif")) << name;
  }
}

TEST_F(CommandLineTest, DryRunReadsNoSample) {
  image::io::writeImage(*input, folder / "in.png");
  std::string bytes = readText(folder / "in.png");
  bytes.at(bytes.find("IDAT") + 10) ^= 0x55;
  writeText(folder / "in.png", bytes);
  writeText(folder / "out.tif", "old");
  const std::string run = mean + "--InImg in.png --OutImg out.tif,type=float32 ";

  const Answer answer = call(run + "--dry-run");
  EXPECT_EQ(0, answer.status);
  EXPECT_EQ("OutImg: 37 x 150 float32\n", answer.output + answer.errors);
  const Json expected = {{"x", 37}, {"y", 150}, {"z", 1}, {"c", 1}, {"t", 1}, {"type", "uint8"}};
  EXPECT_EQ(expected, callJson(mean + "--InImg in.png --dry-run --json").at("OutImg"));
  expectRefused(1, run, "in.png");
  EXPECT_EQ("old", readText(folder / "out.tif"));
}

TEST_F(CommandLineTest, ExplainsItsChoices) {
  const std::string run = mean + "--InImg in.tif --OutImg out.tif --explain ";
  const Json chosen = Json::array(
      {{{"child", "MeanSmoothing2dImgLvl2"}, {"reason", "the image is in the memory of the host"}}});
  EXPECT_EQ((Json{{"explain", chosen}}), callJson(run));
  EXPECT_TRUE(fs::remove(folder / "out.tif"));
  const Json plan = callJson(run + "--dry-run --json");
  EXPECT_EQ(chosen, plan.at("explain"));
  EXPECT_EQ(37, plan.at("OutImg").at("x"));
  const Answer answer = call(run + "--dry-run");
  EXPECT_EQ(
      "OutImg: 37 x 150 uint8\n"
      "explain: MeanSmoothing2dImgLvl2: the image is in the memory of the host\n",
      answer.output + answer.errors);
  EXPECT_FALSE(fs::exists(folder / "out.tif"));

  // The answer goes first: where it cannot be given, no file is written.
  EXPECT_EQ(1, call(run, "/dev/full").status);
  EXPECT_FALSE(fs::exists(folder / "out.tif"));
  // What the samples decide a dry run does not tell, and what they have decided a run does.
  const std::string median =
      "run Median3dImg --InHalfKnlSizeX 1 --InHalfKnlSizeY 2 --InHalfKnlSizeZ 1 --OutImg out.tif --explain ";
  const auto words = Image::create({5, 4, 3}, eImageBufferType::UInt16);
  test::forEachSample(words->getGeometry(),
                      [&](auto x, auto... at) { test::setSample(*words, 60.0 * double(x), x, at...); });
  image::io::writeImage(*words, folder / "words.tif");
  const Json measured = {{"child", "StatsMsrLvl1"},
                         {"reason", "for half sizes 1, 2 and 1 the range of the samples decides"}};
  const Json counted = {{"child", "HistoMedian3dImgLvl1"}, {"reason", "the range 0 to 240 fits 256 levels"}};
  EXPECT_EQ(Json::array({measured}), callJson(median + "--InImg3d words.tif --dry-run --json").at("explain"));
  EXPECT_EQ((Json{{"InOutOptAllow8bitsCompression", false}, {"explain", {measured, counted}}}),
            callJson(median + "--InImg3d words.tif --InOutOptAllow8bitsCompression true"));
  EXPECT_EQ("HistoMedian3dImgLvl1",
            callJson(median + "--InImg3d in.tif --dry-run --json").at("explain").at(1).at("child"));
  // Beside other outputs, and where there is nothing to choose.
  const Json printed = callJson("run StatsMsr --InImg in.tif --explain");
  EXPECT_EQ(5550, printed.at("OutStatsResult").at("count"));
  EXPECT_EQ(Json::array(), printed.at("explain"));
  EXPECT_EQ((Json{{"explain", Json::array()}}),
            callJson("run StatsMsr --InImg in.tif --explain --dry-run --json"));
  EXPECT_EQ("", call("run StatsMsr --InImg in.tif --explain --dry-run").output);
  EXPECT_TRUE(test::has(call("run MeanSmoothing2dImg --help").output, "--explain"));
}

TEST_F(CommandLineTest, WordsThatAreOff) {
  const std::string files = mean + "--InImg in.tif --OutImg out.tif ";
  const std::string run = "run MeanSmoothing2dImg ";
  const struct {
    std::string words, why;
  } cases[] = {
      {"lst", "list"},
      {"--versio", "--version"},
      {"''", "unknown command ''"},
      {"list --al", "--all"},
      {"list a b", "'b'"},
      {"describe", "PROCESSOR"},
      {"describe meansmothing2dimg", "MeanSmoothing2dImg"},
      {"info", "IMAGE"},
      {"info --jsn in.tif", "--json"},
      {"run", "name of a processor"},
      {"run --quiet MeanSmoothing2dImg", "name of a processor"},
      {"run MeanSmooting2dImgLvl1", "MeanSmoothing2dImg"},
      {files + "--InHalfKnlSizX 3", "--InHalfKnlSizeX"},
      {files + "--OutImage=out.tif", "--OutImg"},
      {files + "--thread 3", "--threads"},
      {files + "--explan", "--explain"},
      {files + "more", "'more'"},
      {files + "--InImg in.tif", "--InImg is given twice"},
      {files + "--threads", "--threads"},
      {files + "--threads 0", "'0'"},
      {files + "--threads two", "'two'"},
      {files + "--threads=", "''"},
      {files + "--quiet=3", "--quiet takes no value, not '3'"},
      {files + "--dry-run=", "--dry-run takes no value"},
      {"'a\x1b[31mb\nc'", "'a\\x1b[31mb\\nc'"},
      {files + "--threads " + std::string(5000, '7'),
       std::string(100, '7') + "..." + std::string(60, '7') + "'"},
      {files + "--instruction-set avx3", "avx2"},
      {files + "--max-image-bytes 0", "'0'"},
      {files + "--max-image-bytes 12X", "'12X'"},
      {files + "--max-image-bytes " + std::string(5000, '7'), std::string(100, '7') + "..."},
      {files + "--max-image-bytes 99999999T", "'99999999T'"},
      {"info in.tif --max-image-bytes -1", "'-1'"},
      {files + "--log-level inf", "INFO"},
      {mean + "--InImg in.tif --OutImg out.tif,type=uint7", "--OutImg 'uint7'; nearest: uint8"},
      {mean + "--InImg in.tif --OutImg out.tif,tpye=uint8", "--OutImg 'tpye'; nearest: type"},
      {"run HistoO1Median2dImg --InImg in.tif --OutImg out.tif --InInputRange 5", "maximum is missing"},
      {mean + "--InImg --OutImg out.tif", "missing before --OutImg"},
      {run + "--InHalfKnlSizeX -1", "'-1' is not"},
      {run + "--InHalfKnlSizeX=-1", "'-1' is not"},
      {run + "--InHalfKnlSizeX 1.5", "'1.5' is not"},
      {run + "--InHalfKnlSizeX=", "'' is not"},
      {run + "--InHalfKnlSizeX= 3", "unexpected word '3'"},
      {run + "--InHalfKnlSizeX 40000 --InHalfKnlSizeY x", "'x' is not"},
      {"run MeanSmoothing2dImgLvl3 --InKnlYStrip2d in.tif", "InKnlYStrip2d"},
      {files + "--OutOptWk1RealGpuImg ./out.tif", "the same file"},
  };
  for (const auto& [words, why] : cases) expectRefused(2, words, why);
  EXPECT_FALSE(fs::exists(folder / "out.tif"));

  const Answer answer = call("");
  EXPECT_EQ(2, answer.status);
  EXPECT_EQ("", answer.output);
  EXPECT_TRUE(test::has(answer.errors, "vexo run PROCESSOR"));
}

TEST_F(CommandLineTest, FailedRunsLeaveTheOldOutput) {
  writeText(folder / "out.tif", "old");
  writeText(folder / "text.tif", "no image");
  const std::string run = "run MeanSmoothing2dImg --InImg in.tif --OutImg out.tif ";
  const struct {
    std::string words, why;
  } cases[] = {
      {"info none.tif", "none.tif"},
      {"info in.tif --max-image-bytes 5K", "in.tif': an image of 37 x 150 of uint8 takes 5550 bytes"},
      {mean + "--InImg in.tif --OutImg out.tif --max-image-bytes 5549",
       "InImg: cannot read 'in.tif': an image"},
      {mean + "--InImg none.tif --OutImg out.tif", "InImg: cannot read 'none.tif'"},
      {mean + "--InImg text.tif --OutImg out.tif", "text.tif"},
      {mean + "--InImg in.tif", "OutImg"},
      {mean + "--OutImg out.tif", "InImg"},
      {run + "--InHalfKnlSizeX 1", "InHalfKnlSizeY"},
      {run + "--InHalfKnlSizeX 1 --InHalfKnlSizeY 40000", "40000"},
      {"run GaussianSmoothing2dImg --InImg in.tif --OutImg out.tif --InStdDevX 1 --InStdDevY 1 "
       "--InOptSmoothingGaussianCoverage coverage=2",
       "InOptSmoothingGaussianCoverage: the value is refused: coverage: 2"},
      {"run DespeckleFilter2dImg --InImg in.tif --OutImg out.tif --InHalfKnlSizeX 1 --InHalfKnlSizeY 1 "
       "--InFactor inf",
       "InFactor: the value is refused: inf"},
      {run + "--InHalfKnlSizeX 1 --InHalfKnlSizeY @none.txt", "'none.txt': No such file"},
      {run + "--InHalfKnlSizeX 1 --InHalfKnlSizeY @.", "'.'"},
      {mean + "--InImg in.tif --OutImg out.jpg", ".jpg"},
      {mean + "--InImg in.tif --OutImg none/out.tif", "none"},
      {mean + "--InImg in.tif --OutImg .", "folder"},
      {mean + "--InImg in.tif --OutImg out.png,type=float32", "float32"},
      {mean + "--InImg in.tif --OutImg /dev/full", "OutImg: cannot write '/dev/full'"},
  };
  for (const auto& [words, why] : cases) expectRefused(1, words, why);
  rlimit before{};
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &before));
  const rlimit small{100, before.rlim_max};
  const auto caller = std::signal(SIGXFSZ, SIG_DFL);  // it may be ignored, which would hide a fault
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
  expectRefused(1, mean + "--InImg in.tif --OutImg out.tif", "OutImg: cannot write 'out.tif'");
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &before));
  std::signal(SIGXFSZ, caller);
  EXPECT_EQ("old", readText(folder / "out.tif"));
  for (const auto& entry : fs::directory_iterator(folder))
    EXPECT_EQ(std::string::npos, entry.path().string().find(".part")) << entry.path();

  const Answer logged = call(mean + "--InImg none.tif --OutImg out.tif --log-level error");
  EXPECT_EQ(1, logged.status);
  EXPECT_EQ(0u, logged.errors.rfind("ERROR vexo.VEXOImageIO: ", 0)) << logged.errors;

  for (const char* words : {"list", "--help", "info in.tif", "describe MeanSmoothing2dImg --json"}) {
    const Answer answer = call(words, "/dev/full");
    EXPECT_EQ(1, answer.status) << words;
    EXPECT_EQ("vexo: cannot write to standard output\n", answer.errors) << words;
  }
}

TEST_F(CommandLineTest, SignalsEndARunWithoutATrace) {
  image::io::writeImage(*test::rangeImage({4000, 4000}, eImageBufferType::UInt16, 0, 60000, 0),
                        folder / "large.tif");
  writeText(folder / "out.tif", "old");
  const auto count = [this] { return std::distance(fs::directory_iterator(folder), {}); };
  call("--version");  // so that the files of an answer are there
  const auto before = count();
  for (const auto& [name, number] : {std::pair<std::string, int>{"HUP", 1}, {"INT", 2}, {"TERM", 15}}) {
    // A shell that is not interactive ignores SIGINT in what it starts in the background.
    const Answer answer = call(
        "--version; /usr/bin/python3 -c 'import signal, subprocess, sys, time\n"
        "signal.signal(signal.SIGINT, signal.default_int_handler)\n"
        "run = subprocess.Popen(sys.argv[1:])\n"
        "def caught():\n"  // whether the program has got as far as to catch signals
        " lines = dict(line.split(\":\", 1) for line in open(f\"/proc/{run.pid}/status\"))\n"
        " return int(lines[\"SigCgt\"], 16) & 0x4003 == 0x4003\n"
        "while not caught(): time.sleep(0.05)\n"
        "time.sleep(0.3)\n"
        "run.send_signal(signal.SIG" +
        name +
        ")\n"
        "sys.exit(run.wait())' '" VEXO_PROGRAM
        "' run GenericMedian2dImg --InImg large.tif "
        "--OutImg out.tif --InHalfKnlSizeX 15 --InHalfKnlSizeY 15 ");
    EXPECT_EQ(128 + number, answer.status) << name;
    EXPECT_EQ(0u, answer.errors.rfind("vexo: cancelled by ", 0)) << answer.errors;
    EXPECT_EQ(answer.errors.size() - 1, answer.errors.find('\n')) << answer.errors;
    EXPECT_EQ("old", readText(folder / "out.tif"));
    EXPECT_EQ(before, count());
  }
}

TEST_F(CommandLineTest, ListsProcessors) {
  const Json list = callJson("list --json"), all = callJson("list --json --all");
  EXPECT_GT(all.size(), list.size());
  const auto found = std::find_if(list.begin(), list.end(),
                                  [](const Json& e) { return e.at("name") == "MeanSmoothing2dImgLvl1"; });
  ASSERT_NE(list.end(), found);
  EXPECT_EQ("vexo::imaproc::filter::MeanSmoothing2dImgLvl1", found->at("typeName"));
  const std::string toolTip = found->at("toolTip");
  EXPECT_NE("", toolTip);

  const std::string lines = call("list").output;
  EXPECT_EQ(list.size(), static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n')));
  EXPECT_TRUE(test::has(lines, toolTip));
  EXPECT_FALSE(callJson("list MEANSMOOTH --json").empty());
  EXPECT_TRUE(callJson("list nothing-like-this --json").empty());
}

TEST_F(CommandLineTest, ListsTheFiltersOfTheReadme) {
  std::set<std::string> listed, stated;
  for (const Json& entry : callJson("list --json")) {
    const std::string name = entry.at("name");
    listed.insert(name.substr(0, name.size() - 4));
  }
  for (const auto& [name, row] : test::readReadme(VEXO_README)) stated.insert(name);
  EXPECT_EQ(listed, stated);
}

TEST_F(CommandLineTest, DescribesAProcessor) {
  const Json description = callJson("describe MeanSmoothing2dImg --json");
  EXPECT_EQ("MeanSmoothing2dImgLvl1", description.at("name"));
  EXPECT_EQ(1, description.at("version"));
  const Json& attributes = description.at("attributes");
  const std::vector<std::vector<std::string>> expected = {{"InImg", "input", "image"},
                                                          {"InHalfKnlSizeX", "input", "unsigned"},
                                                          {"InHalfKnlSizeY", "input", "unsigned"},
                                                          {"OutImg", "output", "image"},
                                                          {"OutOptWk1RealGpuImg", "output", "image"}};
  ASSERT_EQ(expected.size(), attributes.size());
  const std::string text = call("describe MeanSmoothing2dImg").output;
  const std::string help = call("run MeanSmoothing2dImg --help").output;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(expected[i][0], attributes[i].at("name"));
    EXPECT_EQ(expected[i][1], attributes[i].at("kind"));
    EXPECT_EQ(expected[i][2], attributes[i].at("valueType"));
    EXPECT_EQ(i == 4, attributes[i].at("optional").get<bool>());
    EXPECT_TRUE(test::has(text, attributes[i].at("toolTip")));
    EXPECT_TRUE(test::has(help, "--" + expected[i][0]));
  }
}

TEST_F(CommandLineTest, PrintsOutputsThatAreNoImage) {
  double sum = 0, squares = 0, low = 255, high = 0;
  for (std::size_t y = 0; y < 150; ++y)
    for (std::size_t x = 0; x < 37; ++x) {
      const double v = input->getRow<std::uint8_t>(y)[x];
      sum += v;
      squares += v * v;
      low = std::min(low, v);
      high = std::max(high, v);
    }
  const Json printed = callJson("run StatsMsrLvl1 --InImg in.tif");
  ASSERT_EQ(1u, printed.size());
  const Json& found = printed.at("OutStatsResult");
  const double mean = sum / 5550, deviation = std::sqrt(squares / 5550 - mean * mean);
  EXPECT_EQ(low, found.at("minimum"));
  EXPECT_EQ(high, found.at("maximum"));
  EXPECT_EQ(sum, found.at("sum"));
  EXPECT_EQ(5550, found.at("count"));
  EXPECT_NEAR(mean, found.at("mean").get<double>(), 1e-12 * mean);
  EXPECT_NEAR(deviation, found.at("standardDeviation").get<double>(), 1e-10 * deviation);

  const auto real = Image::create({2, 1, 1, 1, 1}, eImageBufferType::Real32);
  real->getRow<float>(0)[0] = std::nanf("");
  real->getRow<float>(0)[1] = -3;
  image::io::writeImage(*real, folder / "nan.tif");
  const Json result = callJson("run StatsMsr --InImg nan.tif").at("OutStatsResult");
  EXPECT_EQ(-3, result.at("minimum"));
  EXPECT_EQ("nan", result.at("mean"));
  expectRefused(2, "run StatsMsr --InImg in.tif --OutStatsResult minimum=1", "OutStatsResult");
  const Json attributes = callJson("describe StatsMsr --json").at("attributes");
  EXPECT_EQ("StatsResult", attributes.at(1).at("valueType"));
}

TEST_F(CommandLineTest, InformsAboutAnImage) {
  const std::int16_t samples[] = {-7, 2, 300, 4, 5, 6};
  image::io::writeImage(*Image::wrapConst(samples, {3, 1, 2}, eImageBufferType::Int16, {6, 6}),
                        folder / "stack.tif");
  const Json expected = {{"x", 3},          {"y", 1},        {"z", 2},         {"c", 1},          {"t", 1},
                         {"type", "int16"}, {"minimum", -7}, {"maximum", 300}, {"mean", 310. / 6}};
  EXPECT_EQ(expected, callJson("info stack.tif --json"));
  const std::string text = call("info stack.tif").output;
  for (const char* part : {"3 x 1 x 2 (z) x 1 (c) x 1 (t)\n", "int16\n", "-7\n", "300\n", "51.66666"})
    EXPECT_TRUE(test::has(text, part));

  const float nan = std::nanf(""), infinity = std::numeric_limits<float>::infinity();
  const struct {
    float first, second;
    Json minimum, maximum, mean;
  } cases[] = {{nan, 0.5f, 0.5, 0.5, "nan"}, {nan, nan, 0, 0, "nan"}, {infinity, 1, 1, "inf", "inf"}};
  for (const auto& c : cases) {
    const float values[] = {c.first, c.second};
    image::io::writeImage(*Image::wrapConst(values, {2, 1}, eImageBufferType::Real32, {}),
                          folder / "real.tif");
    const Json info = callJson("info real.tif --json");
    EXPECT_EQ((Json{c.minimum, c.maximum, c.mean}), (Json{info["minimum"], info["maximum"], info["mean"]}));
  }
}

}  // namespace
}  // namespace vexo
