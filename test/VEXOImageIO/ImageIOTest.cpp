#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <limits>

#include "TestFiles.h"
#include "VEXOImageIO/Format.h"

namespace vexo::image::io {
namespace {

TEST_F(ImageIO, RoundTripOfAllTypesAndGeometries) {
  std::vector<std::pair<std::string, ImageGeometry>> cases;
  for (const char* name : {"a.tif", "a.TIFF", "plain"})
    for (const ImageGeometry& g : {ImageGeometry{1, 1},
                                   {7, 5},
                                   {1030, 1100},
                                   {5, 4, 3},
                                   {3, 2, 1, 4},
                                   {3, 1, 1, 1, 5},
                                   {5, 4, 2, 3, 4}})
      cases.emplace_back(name, g);
  for (std::size_t c = 1; c <= 4; ++c) cases.push_back({"a.PnG", {13, 9, 1, c}});
  for (const auto& [name, geometry] : cases)
    for (const eImageBufferType type : test::allTypes()) {
      SCOPED_TRACE(name + " " + toString(geometry) + " " + toString(type));
      const bool png = name == "a.PnG";
      if (png && type != eImageBufferType::UInt8 && type != eImageBufferType::UInt16) continue;
      const auto image = randomImage(geometry, type);
      checkWritable(at(name), geometry, type);
      writeImage(*image, at(name));
      const ImageInfo info = readImageInfo(at(name));
      EXPECT_EQ(toString(geometry), toString(info.geometry));
      EXPECT_EQ(type, info.type);
      expectSame(*image, *readImage(at(name)));
      EXPECT_EQ(png, readBytes(at(name))[1] == 'P');
    }
  EXPECT_EQ(4u, countFiles());
}

TEST_F(ImageIO, SourcesOfAnyStride) {
  const ImageGeometry g{6, 5, 2, 3};
  const auto whole = randomImage({16, 10, 4, 3}, eImageBufferType::UInt16);
  const ImageStrides s = whole->getStrides();
  for (const ImageStrides& strides :
       {ImageStrides{-2 * s.y, s.z, s.c, s.t}, {s.y, 2 * s.z, s.c, 0}, {0, 0, s.c, 0}}) {
    const auto view = Image::wrapConst(whole->getRow(9), g, eImageBufferType::UInt16, strides);
    writeImage(*view, at("a.tif"));
    expectSame(*view, *readImage(at("a.tif")));
    const auto plane = Image::wrapConst(whole->getRow(9), {6, 5, 1, 3}, eImageBufferType::UInt16, strides);
    writeImage(*plane, at("a.png"));
    expectSame(*plane, *readImage(at("a.png")));
  }
}

TEST_F(ImageIO, UnwritableImagesAreRefusedBeforeAnyWork) {
  struct Case {
    const char* name;
    ImageGeometry geometry;
    eImageBufferType type;
    const char* cause;
  };
  constexpr auto u8 = eImageBufferType::UInt8;
  const std::size_t million = 1100000;
  for (const Case& c : {Case{"a.png", {3, 2}, eImageBufferType::Real32, "float32"},
                        {"a.png", {3, 2, 2}, u8, "(z)"},
                        {"a.png", {3, 2, 1, 5}, u8, "(c)"},
                        {"a.png", {3, 2, 1, 1, 2}, u8, "(t)"},
                        {"a.bmp", {3, 2}, u8, "'.bmp'"},
                        {"no/a.tif", {3, 2}, u8, "no folder"},
                        {"temporary", {3, 2}, u8, "folder"},
                        {"new/", {3, 2}, u8, "no file"},
                        {"a.tif", {1, 1, million}, u8, "planes"}}) {
    expectError([&] { checkWritable(at(c.name), c.geometry, c.type); }, at(c.name), c.cause);
    expectError([&] { writeImage(*Image::create(c.geometry, c.type), at(c.name)); }, at(c.name), c.cause);
  }
  EXPECT_NO_THROW(checkWritable(at("a.png"), {3, 2}, u8));
  EXPECT_EQ(0u, countFiles());
}

TEST_F(ImageIO, FailedWriteLeavesTheOldFile) {
  const auto old = randomImage({9, 9}, eImageBufferType::UInt8);
  const auto large = randomImage({300, 300, 1, 1}, eImageBufferType::UInt16);
  const auto stack = randomImage({30, 30, 40}, eImageBufferType::UInt8);
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  for (const char* name : {"a.tif", "a.png"}) {
    writeImage(*old, at(name));
    for (const rlim_t limit : {0, 5, 2000, 20000}) {
      const rlimit few{limit, before.rlim_max};
      setrlimit(RLIMIT_FSIZE, &few);
      const bool isTiff = std::string(name) == "a.tif";
      const std::string error = test::failureOf([&] { writeImage(isTiff ? *stack : *large, at(name)); });
      setrlimit(RLIMIT_FSIZE, &before);
      EXPECT_TRUE(test::has(error, "File too large"));
      expectSame(*old, *readImage(at(name)));
    }
  }
  EXPECT_EQ(2u, countFiles());
}

TEST_F(ImageIO, DevicesReceiveTheBytes) {
  const auto image = randomImage({50, 40}, eImageBufferType::UInt8);
  expectError([&] { writeImage(*image, "/dev/full"); }, "/dev/full", "space");
  EXPECT_NO_THROW(writeImage(*image, "/dev/null"));
  EXPECT_EQ(0u, countFiles());
  fs::create_symlink("/dev/full", at("link.png"));
  expectError([&] { writeImage(*image, at("link.png")); }, at("link.png"), "space");
  EXPECT_TRUE(fs::is_symlink(at("link.png")));
  EXPECT_EQ(1u, countFiles());
  setenv("TMPDIR", at("missing").c_str(), 1);
  expectError([&] { writeImage(*image, "/dev/null"); }, "/dev/null", "temporary");
}

TEST_F(ImageIO, LinksAndPermissionsSurvive) {
  fs::create_directories(at("real"));
  fs::create_symlink("real/a.tif", at("link.tif"));
  fs::create_symlink(at("link.tif"), at("again.tif"));
  const mode_t mask = umask(027);
  for (const mode_t mode : {0640, 0604}) {  // the usual one of a new file, then one that was set
    const auto image = randomImage({9, 9}, eImageBufferType::Int32);
    writeImage(*image, at("again.tif"));
    EXPECT_TRUE(fs::is_symlink(at("again.tif")) && fs::is_symlink(at("link.tif")));
    ASSERT_TRUE(fs::is_regular_file(fs::symlink_status(at("real/a.tif"))));
    expectSame(*image, *readImage(at("real/a.tif")));
    EXPECT_EQ(mode, static_cast<mode_t>(fs::status(at("real/a.tif")).permissions()));
    chmod(at("real/a.tif").c_str(), 0604);
  }
  umask(mask);
  EXPECT_EQ(4u, countFiles());
}

TEST_F(ImageIO, WhatAKilledWriterLeavesTheNextOneRemoves) {
  const auto image = randomImage({300, 300}, eImageBufferType::UInt16);
  fs::create_directories(at("folder"));
  const pid_t child = fork();
  if (child == 0) {
    const rlimit few{20000, 20000}, none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGXFSZ, SIG_DFL);
    setrlimit(RLIMIT_FSIZE, &few);
    writeImage(*image, at("folder/a.tif"));
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_FALSE(fs::exists(at("folder/a.tif")));

  const auto name = [&](const std::string& pid) { return at("folder/.vexo-" + pid + "-0.part"); };
  const std::string dead = std::to_string(child), kept[] = {std::to_string(getppid()), "x", dead + "0x"};
  for (const std::string& pid : kept) writeBytes(name(pid), nullptr, 0);
  writeBytes(name(dead), nullptr, 0);
  writeBytes(at("folder/.vexo-" + dead + "-1.part"), nullptr, 0);
  // Its writer is on another machine.
  const int locked = open(at("folder/.vexo-" + dead + "-1.part").c_str(), O_RDONLY);
  ASSERT_EQ(0, flock(locked, LOCK_EX));
  writeImage(*image, at("folder/a.tif"));
  EXPECT_FALSE(fs::exists(name(dead)));
  for (const std::string& pid : kept) EXPECT_TRUE(fs::exists(name(pid))) << pid;
  EXPECT_EQ(5u, static_cast<std::size_t>(std::distance(fs::directory_iterator(at("folder")), {})));
  close(locked);
}

TEST_F(ImageIO, ControlGroupsLimitTheMemory) {
  const auto write = [&](const std::string& name, const std::string& text) {
    fs::create_directories(fs::path(at(name)).parent_path());
    writeBytes(at(name), reinterpret_cast<const unsigned char*>(text.data()), text.size());
  };
  write("group/a/memory.max", "3000\n");
  write("group/a/b/memory.max", "max\n");
  write("group/a/c/memory.max", "2000\n");
  write("group/memory/memory.limit_in_bytes", "9223372036854771712\n");
  write("group/memory/d/memory.limit_in_bytes", "1000\n");
  for (const auto& [list, bytes] : {std::pair<std::string, std::uint64_t>{"0::/a/b\n", 3000},
                                    {"0::/a/c\n", 2000},
                                    {"0::/\n", std::numeric_limits<std::uint64_t>::max()},
                                    {"5:cpu:/d\n4:cpuset,memory:/d/e\n0::/a/c\n", 1000},
                                    {"4:memory:/outside/of/it\n", 9223372036854771712u},
                                    {"nonsense\n:\n", std::numeric_limits<std::uint64_t>::max()}}) {
    write("list", list);
    EXPECT_EQ(bytes, getGroupMemory(at("list"), at("group"))) << list;
  }
  EXPECT_GE(std::uint64_t(sysconf(_SC_PHYS_PAGES)) * std::uint64_t(sysconf(_SC_PAGE_SIZE)) / 2,
            getMaxImageBytes());
}

TEST_F(ImageIO, DecodedBytesAreLimited) {
  EXPECT_LT(std::uint64_t(1) << 28, getMaxImageBytes());
  const auto image = randomImage({5, 4, 1, 2}, eImageBufferType::UInt16);
  for (const char* name : {"a.tif", "a.png"}) {
    writeImage(*image, at(name));
    setMaxImageBytes(79);
    expectUnreadable(at(name), "of uint16 takes 80 bytes, more than the limit of 79");
    setMaxImageBytes(80);
    EXPECT_NO_THROW(readImage(at(name)));
    setMaxImageBytes(0);
  }
  // The rows of an interlaced file are kept besides.
  writeRawPng(at("a.png"), 3, 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_ADAM7, {{1, 2, 3}, {4, 5, 6}});
  setMaxImageBytes(11);
  expectUnreadable(at("a.png"), "takes 12 bytes, more than the limit of 11");
  setMaxImageBytes(12);
  EXPECT_NO_THROW(readImage(at("a.png")));
  setMaxImageBytes(0);
}

}  // namespace
}  // namespace vexo::image::io
