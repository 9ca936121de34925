#include <png.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <fstream>
#include <limits>

#include "TestFiles.h"

namespace vexo::image::io {
namespace {

/// While it lives the process gets next to no more address space. Not under a sanitizer, which needs its own.
class LittleMemory {
public:
  LittleMemory() {
    getrlimit(RLIMIT_AS, &_before);
#ifndef __SANITIZE_ADDRESS__
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit few{pages * static_cast<std::size_t>(sysconf(_SC_PAGE_SIZE)) + (std::size_t(64) << 20),
                     _before.rlim_max};
    setrlimit(RLIMIT_AS, &few);
#endif
  }
  ~LittleMemory() {
    setrlimit(RLIMIT_AS, &_before);
  }

private:
  rlimit _before{};
};

/// The fields of a page of 8-bit samples whose strips all lie at offset 8.
std::vector<RawField> makeFields(std::uint32_t width, std::uint32_t height, std::uint32_t rowsPerStrip,
                                 std::uint32_t compression, std::vector<std::uint32_t> offsets,
                                 std::vector<std::uint32_t> counts) {
  return {{256, 4, {width}}, {257, 4, {height}}, {258, 3, {8}}, {259, 3, {compression}},
          {262, 3, {1}},     {273, 4, offsets},  {277, 3, {1}}, {278, 4, {rowsPerStrip}},
          {279, 4, counts}};
}

TEST_F(ImageIO, SmallFilesTakeLittleMemory) {
  struct Case {
    const char* cause;
    std::size_t data;
    std::vector<RawField> fields;
    int pages = 1;
  };
  const std::uint32_t huge = 60000;
  std::vector<Case> cases;
  for (const std::uint32_t compression :
       {COMPRESSION_JPEG, COMPRESSION_ZSTD, COMPRESSION_LZMA, COMPRESSION_LERC, COMPRESSION_ADOBE_DEFLATE,
        COMPRESSION_PIXARLOG, COMPRESSION_OJPEG})
    cases.push_back({"cannot come from", 64, makeFields(huge, huge, huge, compression, {8}, {64})});
  for (const std::uint32_t compression :
       {COMPRESSION_WEBP, COMPRESSION_CCITTFAX4, COMPRESSION_THUNDERSCAN, COMPRESSION_JBIG})
    cases.push_back({"damaged", 64, makeFields(huge, huge, huge, compression, {8}, {64})});
  cases.push_back({"cannot come from", 64, makeFields(16000, 16000, 16000, COMPRESSION_WEBP, {8}, {64})});
  cases.push_back({"compression 34712 is not supported", 64, makeFields(5, 4, 4, 34712, {8}, {20})});
  cases.push_back(
      {"cannot hold the 4294967280 strips", 64, makeFields(1, 0xfffffff0, 1, COMPRESSION_NONE, {8}, {64})});
  std::vector<RawField> noCounts = makeFields(1, 0xfffffff0, 1, COMPRESSION_LZW, {8}, {64});
  noCounts.pop_back();
  cases.push_back({"", 64, noCounts});
  cases.push_back(
      {"more bytes than the file", 65536, makeFields(256, 256, 256, COMPRESSION_NONE, {8}, {65536}), 2000});
  for (Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "compression " << c.fields[3].values[0] << ", " << c.cause);
    writeRawTiff(at("a.tif"), c.data, c.fields, c.pages);
    const LittleMemory memory;
    expectUnreadable(at("a.tif"), c.cause);
  }
  for (const int width : {1 << 30, 1 << 28})
    for (const int interlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
      writeRawPng(at("a.png"), width, 16, PNG_COLOR_TYPE_RGB_ALPHA, interlace, {}, 1);
      const LittleMemory memory;
      expectUnreadable(at("a.png"), "cannot hold");
    }
}

TEST_F(ImageIO, DirectoriesThatShareTheirDataAreRefused) {
  const auto write = [&](int pages) {
    std::vector<RawField> fields = makeFields(1, 1, 1, COMPRESSION_NONE, {8}, {1});
    fields.insert(fields.begin() + 5, {270, 2, {'a', 'b', 'c', 0}});
    writeRawTiff(at("a.tif"), 2 << 20, fields, pages);
    // Each text is all of the samples.
    Bytes bytes = readBytes(at("a.tif"));
    bytes[(2 << 20) + 7] = 0;
    const unsigned char before[] = {14, 1, 2, 0, 4, 0, 0, 0},
                        after[] = {14, 1, 2, 0, 0, 0, 32, 0, 8, 0, 0, 0};
    auto at = bytes.begin() + (2 << 20);
    for (int i = 0; i < pages; ++i)
      std::copy_n(after, 12, at = std::search(at, bytes.end(), before, before + 8));
    writeBytes(this->at("a.tif"), bytes.data(), bytes.size());
  };
  write(20);
  EXPECT_EQ(20u, readImage(at("a.tif"))->getSizeZ());
  write(200);
  expectUnreadable(at("a.tif"), "the same bytes many times over");
}

TEST_F(ImageIO, StacksBehindOneDirectoryWithoutALabelAreNamed) {
  for (const std::uint32_t planes : {1, 3}) {
    std::vector<RawField> fields = makeFields(4, 4, 4, COMPRESSION_NONE, {8}, {16});
    fields.push_back({33629, 5, std::vector<std::uint32_t>(planes, 1)});
    writeRawTiff(at("a.tif"), 48, fields);
    if (planes > 1)
      expectUnreadable(at("a.tif"), "STK are not supported (3 planes): save a page");
    else
      EXPECT_NO_THROW(readImage(at("a.tif")));
  }
}

TEST_F(ImageIO, MasksAreNoPages) {
  TiffPage mask;
  mask.kind = FILETYPE_MASK, mask.bits = 1;
  writePages(at("a.tif"), "w", {TiffPage(), mask}, "", fillByIndex);
  EXPECT_EQ(1u, readImageInfo(at("a.tif")).geometry.z);
  writePages(at("a.tif"), "w", {mask}, "", fillByIndex);
  expectUnreadable(at("a.tif"), "masks");
}

/// Blocks that a decoder holds as a whole are read up to what the manual states, whatever libtiff would hold.
TEST_F(ImageIO, ConstantBlocksAreReadUpToTheirBound) {
  for (const int compression : {COMPRESSION_LERC, COMPRESSION_PIXARLOG})
    for (const bool fits : {true, false}) {
      SCOPED_TRACE(testing::Message() << compression << ' ' << fits);
      TiffPage page;
      page.compression = compression, page.width = 4096, page.height = fits ? 4000 : 6000;
      page.rowsPerStrip = page.height;
      writePages(at("a.tif"), "w", {page}, "", [](int, int, Bytes& bytes) { bytes.assign(bytes.size(), 0); });
      if (fits)
        EXPECT_NO_THROW(readImage(at("a.tif")));
      else
        expectUnreadable(at("a.tif"), "smaller strips or tiles");
    }
}

/// Tiles of 100 Mi samples for an image of 256.
TEST_F(ImageIO, TilesAreNotMuchLargerThanTheImage) {
  std::vector<RawField> fields = makeFields(16, 16, 16, COMPRESSION_ADOBE_DEFLATE, {8}, {1 << 20});
  const auto writeTile = [&](std::uint32_t side) {
    fields.resize(5);
    fields.insert(fields.end(),
                  {{277, 3, {1}}, {322, 4, {side}}, {323, 4, {side}}, {324, 4, {8}}, {325, 4, {1 << 20}}});
    writeRawTiff(at("a.tif"), 1 << 20, fields);
  };
  writeTile(10240);
  {
    const LittleMemory memory;
    expectUnreadable(at("a.tif"), "tile 1 of page 1 takes 104857600 bytes, but the image only 256");
  }
  writeTile(1024);
  EXPECT_NO_THROW(readImageInfo(at("a.tif")));
  setMaxImageBytes(1 << 20);
  EXPECT_NO_THROW(readImageInfo(at("a.tif")));
  setMaxImageBytes((1 << 20) - 1);
  expectUnreadable(at("a.tif"), "a tile takes 1048576 bytes, more than the limit");
  setMaxImageBytes(0);
}

TEST_F(ImageIO, NotesOfPngsAreNotKept) {
  const auto addNotes = [](png_structp png, png_infop info) {
    std::string words(7900000, 'a');
    for (int i = 0; i < 20; ++i) {
      png_text text{};
      text.compression = i % 2 ? PNG_TEXT_COMPRESSION_zTXt : PNG_ITXT_COMPRESSION_zTXt;
      std::string key = "key";
      text.key = key.data(), text.text = words.data();
      png_set_text(png, info, &text, 1);
    }
    png_set_pHYs(png, info, 2000000, 4000000, PNG_RESOLUTION_METER);
  };
  writeRawPng(at("a.png"), 2, 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, {{1, 2}}, 0, addNotes);
  // libpng goes without what it finds no memory for: what it takes is seen from outside only.
  const pid_t reader = fork();
  if (reader == 0) _exit(test::failureOf([&] { readImage(at("a.png")); }).empty() ? 0 : 1);
  int status = 0;
  rusage child{};
  ASSERT_EQ(reader, wait4(reader, &status, 0, &child));
  EXPECT_EQ(0, status);
  std::size_t pages = 0, residentPages = 0;
  std::ifstream("/proc/self/statm") >> pages >> residentPages;
  const std::size_t resident = residentPages * static_cast<std::size_t>(sysconf(_SC_PAGE_SIZE));
  EXPECT_GT(resident + (std::size_t(64) << 20), static_cast<std::size_t>(child.ru_maxrss) << 10);
  ImageInfo info;
  EXPECT_EQ(2, readImage(at("a.png"), &info)->getRow<std::uint8_t>(0)[1]);
  EXPECT_DOUBLE_EQ(0.5, info.calibration.pixelWidth);
  EXPECT_DOUBLE_EQ(0.25, info.calibration.pixelHeight);
}

TEST_F(ImageIO, AnimatedPngsAreRefused) {
  const auto animate = [](png_structp png, png_infop info) {
    png_byte counts[] = {0, 0, 0, 2, 0, 0, 0, 0};
    png_unknown_chunk chunk{{'a', 'c', 'T', 'L', 0}, counts, sizeof(counts), PNG_HAVE_IHDR};
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, nullptr, 0);
    png_set_unknown_chunks(png, info, &chunk, 1);
  };
  writeRawPng(at("a.png"), 2, 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, {{1, 2}}, 0, animate);
  expectUnreadable(at("a.png"), "animated PNG");
}

TEST_F(ImageIO, StripsLieBehindTheHeaderAndWithinTheFile) {
  const std::vector<std::uint32_t> offsets = {8, 12, 16, 20}, counts = {4, 4, 4, 4};
  struct Case {
    const char* cause;
    std::vector<std::uint32_t> offsets, counts;
  };
  for (const Case& c : {Case{"", offsets, counts},
                        {"strip 3 of page 1 lies in the header", {8, 12}, counts},
                        {"strip 2 of page 1 lies in the header", {8, 7, 16, 20}, counts},
                        {"strip 1 of page 1 lies in the header", {0, 12, 16, 20}, counts},
                        {"strip 3 of page 1 has no data", offsets, {4, 4, 0, 4}},
                        {"ends early", {8, 12, 16, 0xfffffff0}, counts},
                        {"ends early", {8, 12, 16, 150}, {4, 4, 4, 1000}}}) {
    SCOPED_TRACE(c.cause);
    writeRawTiff(at("a.tif"), 16, makeFields(4, 4, 1, COMPRESSION_NONE, c.offsets, c.counts));
    if (*c.cause)
      expectUnreadable(at("a.tif"), c.cause);
    else
      EXPECT_EQ(0x55, *readImage(at("a.tif"))->getRow<std::uint8_t>(3));
  }
  // Strips of one place, each within the file.
  std::vector<std::uint32_t> same(64, 8), each(64, 64);
  writeRawTiff(at("a.tif"), 64, makeFields(64, 64, 1, COMPRESSION_NONE, same, each));
  expectUnreadable(at("a.tif"), "more bytes than the file");
}

}  // namespace
}  // namespace vexo::image::io
