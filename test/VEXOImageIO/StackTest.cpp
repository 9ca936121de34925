#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include "TestFiles.h"

namespace vexo::image::io {
namespace {

/// A stack as a program reads it that follows the label: the first directory only, all planes behind its
/// strip.
struct LabelledStack {
  std::string description;
  std::size_t width = 0, height = 0, bits = 0, format = 1, offset = 0;
  Bytes bytes;

  explicit LabelledStack(const std::string& path) : bytes(readBytes(path)) {
    const std::size_t directory = number(4, 4);
    EXPECT_EQ(42u, number(2, 2));
    for (std::size_t i = 0; i < number(directory, 2); ++i) {
      const std::size_t entry = directory + 2 + 12 * i, count = number(entry + 4, 4);
      const std::size_t value = number(entry + 8, number(entry + 2, 2) == 3 ? 2 : 4);
      switch (number(entry, 2)) {
        case TIFFTAG_IMAGEWIDTH:
          width = value;
          break;
        case TIFFTAG_IMAGELENGTH:
          height = value;
          break;
        case TIFFTAG_BITSPERSAMPLE:
          bits = value;
          break;
        case TIFFTAG_SAMPLEFORMAT:
          format = value;
          break;
        case TIFFTAG_STRIPOFFSETS:
          offset = value;
          EXPECT_EQ(1u, count);
          break;
        case TIFFTAG_IMAGEDESCRIPTION:
          description.assign(&bytes[value], &bytes[value] + count - 1);
          break;
      }
    }
  }
  std::size_t number(std::size_t at, std::size_t size) const {
    std::size_t value = 0;
    std::memcpy(&value, &bytes.at(at), size);
    return value;
  }
  std::size_t find(const std::string& key) const {
    const std::size_t at = description.find("\n" + key + "=");
    return at == std::string::npos ? 0 : std::stoul(description.substr(at + key.size() + 2));
  }
};

TEST_F(ImageIO, StacksAreOnePieceBehindTheLabel) {
  for (const ImageGeometry& g : {ImageGeometry{64, 64, 4}, {3, 1, 1, 2}, {5, 4, 2, 3, 4}, {7, 3, 1, 1, 3}})
    for (const eImageBufferType type : test::allTypes()) {
      SCOPED_TRACE(toString(g) + " " + toString(type));
      // With gaps between the rows.
      const auto whole = randomImage({g.x + 3, g.y, g.z, g.c, g.t}, type);
      const auto image = Image::wrapConst(whole->getData(), g, type, whole->getStrides());
      writeImage(*image, at("a.tif"));
      const LabelledStack stack(at("a.tif"));
      const std::size_t size = getSampleSize(type), planes = g.z * g.c * g.t;
      ASSERT_EQ(0u, stack.description.rfind("ImageJ=", 0));
      EXPECT_EQ(planes, stack.find("images"));
      EXPECT_EQ(g.z, stack.find("slices"));
      EXPECT_EQ(g.c, stack.find("channels"));
      EXPECT_EQ(g.t, stack.find("frames"));
      EXPECT_EQ((std::vector<std::size_t>{g.x, g.y, 8 * size}),
                (std::vector<std::size_t>{stack.width, stack.height, stack.bits}));
      const bool isSigned = type == eImageBufferType::Int8 || type == eImageBufferType::Int16 ||
                            type == eImageBufferType::Int32;
      EXPECT_EQ(type == eImageBufferType::Real32 ? 3u : isSigned ? 2u : 1u, stack.format);
      ASSERT_LE(stack.offset + planes * g.x * g.y * size, stack.bytes.size());
      const unsigned char* next = &stack.bytes[stack.offset];
      for (std::size_t t = 0; t < g.t; ++t)
        for (std::size_t z = 0; z < g.z; ++z)
          for (std::size_t c = 0; c < g.c; ++c)
            for (std::size_t y = 0; y < g.y; ++y, next += g.x * size)
              ASSERT_EQ(0, std::memcmp(image->getRow(y, z, c, t), next, g.x * size))
                  << "row " << y << ", z " << z << ", c " << c << ", t " << t;
      // Everybody else follows the directories.
      std::unique_ptr<TIFF, void (*)(TIFF*)> pages(TIFFOpen(at("a.tif").c_str(), "r"), TIFFClose);
      EXPECT_EQ(planes, std::size_t(TIFFNumberOfDirectories(pages.get())));
      expectSame(*image, *readImage(at("a.tif")));
    }
}

/// What many programs write: a label, one directory, the other planes behind the first.
TEST_F(ImageIO, StacksWithOneDirectoryAreRead) {
  struct Case {
    const char* lines;
    ImageGeometry geometry;  ///< empty: refused
    const char* cause;
    std::uint32_t samples = 1;
  };
  for (const Case& c : {Case{"images=12\nchannels=2\nslices=3\nframes=2\n", {5, 4, 3, 2, 2}, ""},
                        {"images=12\n", {5, 4, 12}, ""},
                        {"images=12\nslices=4\nframes=3\norder=xytzc\n", {5, 4, 4, 1, 3}, ""},
                        {"images=4\nchannels=3\nslices=4\n", {5, 4, 4, 3}, "", 3},
                        {"images=4\nslices=2\nframes=2\n", {5, 4, 2, 3, 2}, "", 3},
                        {"images=13\n", {5, 0}, "state 13 pages, but it has only 12"},
                        {"images=999999999999999999999\n", {5, 0}, "only 12"},
                        {"images=12\nslices=12\norder=xyzzz\n", {5, 0}, "order 'xyzzz'"}}) {
    SCOPED_TRACE(c.lines);
    std::vector<std::uint32_t> text;
    for (const char character : "ImageJ=1.53t\n" + std::string(c.lines) + '\0') text.push_back(character);
    const std::uint32_t bytes = 20 * c.samples;
    writeRawTiff(at("a.tif"), 0,
                 {{256, 3, {5}},
                  {257, 3, {4}},
                  {258, 3, std::vector<std::uint32_t>(c.samples, 8)},
                  {259, 3, {1}},
                  {262, 3, {c.samples == 3 ? 2u : 1u}},
                  {270, 2, text},
                  {273, 4, {8}},
                  {277, 3, {c.samples}},
                  {278, 3, {4}},
                  {279, 4, {bytes}}});
    // The samples go to the end, where the number of planes decides over the size.
    Bytes file = readBytes(at("a.tif"));
    const std::size_t start = file.size();
    for (std::size_t i = 0; i < 240; ++i) file.push_back(static_cast<unsigned char>(i));
    const unsigned char entry[] = {0x11, 1, 4, 0, 1, 0, 0, 0};
    std::copy_n(reinterpret_cast<const unsigned char*>(&start), 4,
                std::search(file.begin(), file.end(), entry, entry + 8) + 8);
    writeBytes(at("a.tif"), file.data(), file.size());
    if (c.geometry.y == 0) {
      expectUnreadable(at("a.tif"), c.cause);
      continue;
    }
    const auto image = readImage(at("a.tif"));
    const ImageGeometry& g = image->getGeometry();
    ASSERT_EQ(toString(c.geometry), toString(g));
    const bool isTimeFirst = std::strstr(c.lines, "xytzc");
    const std::size_t channels = g.c / c.samples;
    for (std::size_t t = 0; t < g.t; ++t)
      for (std::size_t z = 0; z < g.z; ++z)
        for (std::size_t channel = 0; channel < g.c; ++channel) {
          const std::size_t plane =
              isTimeFirst ? z * g.t + t : (t * g.z + z) * channels + channel / c.samples;
          EXPECT_EQ(plane * bytes + 13 * c.samples + channel % c.samples,
                    *(image->getRow<std::uint8_t>(2, z, channel, t) + 3));
        }
  }
}

TEST_F(ImageIO, CalibrationIsKept) {
  struct Case {
    Calibration written, read;
  };
  const Case cases[] = {
      {{0.1625, 0.2, 0.5, "\u00B5m", 2.5, "composite"}, {0.1625, 0.2, 0.5, "\u00B5m", 2.5, "composite"}},
      {{1 / 300., 1 / 300., 0, "inch", 0, "color"}, {1 / 300., 1 / 300., 0, "inch", 0, "color"}},
      {{0.3, 1e-7, 12345.678, "a \\ \u65E5\n\U0001F600", 1e-3, ""},
       {0.3, 1e-7, 12345.678, "a \\ \u65E5\n\U0001F600", 1e-3, "grayscale"}},
      {{1e-30, 1, -1, std::string(65, 'a'), std::nan(""), "odd"}, {0, 0, 0, "", 0, "grayscale"}},
      {{}, {0, 0, 0, "", 0, "grayscale"}}};
  for (const Case& c : cases) {
    writeImage(*randomImage({5, 4, 2, 2}, eImageBufferType::UInt8), at("a.tif"), c.written);
    const Calibration read = readImageInfo(at("a.tif")).calibration;
    SCOPED_TRACE(read.unit);
    EXPECT_DOUBLE_EQ(c.read.pixelWidth, read.pixelWidth);
    EXPECT_DOUBLE_EQ(c.read.pixelHeight, read.pixelHeight);
    EXPECT_DOUBLE_EQ(c.read.spacing, read.spacing);
    EXPECT_DOUBLE_EQ(c.read.frameInterval, read.frameInterval);
    EXPECT_EQ(c.read.unit, read.unit);
    EXPECT_EQ(c.read.displayMode, read.displayMode);
    // A single plane has a label only where that says something.
    writeImage(*randomImage({5, 4}, eImageBufferType::UInt8), at("b.tif"), c.written);
    EXPECT_EQ(c.read.unit, readImageInfo(at("b.tif")).calibration.unit);
    EXPECT_EQ(c.read.unit.empty(), LabelledStack(at("b.tif")).description.empty());
  }
  // PNG knows whole pixels per metre.
  for (const auto& [unit, size] :
       {std::pair<const char*, double>{"\u00B5m", 0.1625}, {"nm", 162.5}, {"cm", 0.00001625}}) {
    writeImage(*randomImage({5, 4}, eImageBufferType::UInt8), at("a.png"), {size, 2 * size, 0, unit, 0, ""});
    const Calibration read = readImageInfo(at("a.png")).calibration;
    EXPECT_DOUBLE_EQ(0.1625, read.pixelWidth);
    EXPECT_DOUBLE_EQ(0.325, read.pixelHeight);
    EXPECT_EQ("\u00B5m", read.unit);
  }
  writeImage(*randomImage({5, 4}, eImageBufferType::UInt8), at("a.png"),
             {1 / 72., 1 / 72., 0, "inch", 0, ""});
  EXPECT_EQ(0, readImageInfo(at("a.png")).calibration.pixelWidth);
}

}  // namespace
}  // namespace vexo::image::io
