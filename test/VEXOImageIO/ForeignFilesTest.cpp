#include <png.h>
#include <sys/stat.h>
#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "TestFiles.h"

namespace vexo::image::io {
namespace {

TEST_F(ImageIO, HyperstackPagesRunChannelFirst) {
  const std::string numbers = "channels=2\nslices=3\nframes=2\n";
  const std::vector<TiffPage> pages(12);
  writePages(at("a.tif"), "w", pages, "ImageJ=1.53t\nimages=12\n" + numbers, [](int page, int, Bytes& bytes) {
    std::fill(bytes.begin(), bytes.end(), static_cast<unsigned char>(page));
  });
  const auto image = readImage(at("a.tif"));
  ASSERT_EQ(toString(ImageGeometry{5, 4, 3, 2, 2}), toString(image->getGeometry()));
  for (std::size_t page = 0; page < 12; ++page)
    EXPECT_EQ(page, *image->getRow<unsigned char>(3, page / 2 % 3, page % 2, page / 6));

  struct Case {
    std::string description;
    ImageGeometry geometry;
  };
  for (const Case& c : {Case{numbers, {5, 4, 12}},
                        {"ImageJ=1\nimages=12\n", {5, 4, 12}},
                        {"ImageJ=1\nslices=3\n", {5, 4, 12}},
                        {"ImageJ=1\nframes=12", {5, 4, 1, 1, 12}}}) {
    writePages(at("b.tif"), "w", pages, c.description, fillByIndex);
    EXPECT_EQ(toString(c.geometry), toString(readImageInfo(at("b.tif")).geometry)) << c.description;
  }
  for (const char* stated :
       {"images=13", "frames=13", "slices=99999999999999999999", "channels=4294967296\nslices=4294967296"}) {
    writePages(at("b.tif"), "w", pages, std::string("ImageJ=1\n") + stated + "\n", fillByIndex);
    expectError([&] { readImage(at("b.tif")); }, at("b.tif"), "only 12");
  }
}

TEST_F(ImageIO, ChannelsOfColourPixelsAreTakenApart) {
  TiffPage page;
  page.samples = 3, page.photometric = PHOTOMETRIC_RGB, page.rowsPerStrip = 4;
  writePages(at("a.tif"), "w", {page, page}, "ImageJ=1\nimages=2\nchannels=2\n", fillByIndex);
  const auto image = readImage(at("a.tif"));
  ASSERT_EQ(toString(ImageGeometry{5, 4, 1, 6}), toString(image->getGeometry()));
  for (std::size_t c = 0; c < 6; ++c)
    EXPECT_EQ(37 * (c / 3) + 3 * 6 + c % 3, image->getRow<unsigned char>(1, 0, c)[1]);
}

TEST_F(ImageIO, LabelsStateTheUnitsOfTheirAxes) {
  struct Case {
    std::string lines;
    float across;
    Calibration read;
  };
  const std::string micrometres = "ImageJ=1\nunit=\\u00B5m\n";
  for (const Case& c :
       {Case{micrometres, 1, {1, 1, 0, "\u00B5m", 0, ""}},
        {"ImageJ=1\nslices=1\n", 1, {}},
        {"ImageJ=1\nunit=pixel\n", 1, {}},
        {micrometres + "yunit=nm\nzunit=mm\nspacing=0.003\n", 2, {0.5, 0.0005, 3, "\u00B5m", 0, ""}},
        {micrometres + "zunit=furlong\nspacing=3\n", 2, {0.5, 0.5, 0, "\u00B5m", 0, ""}},
        {micrometres + "yunit=furlong\nspacing=3\n", 2, {0, 0, 3, "\u00B5m", 0, ""}}}) {
    SCOPED_TRACE(c.lines);
    TiffPage page;
    page.across = c.across;
    writePages(at("a.tif"), "w", {page}, c.lines, fillByIndex);
    const Calibration read = readImageInfo(at("a.tif")).calibration;
    EXPECT_DOUBLE_EQ(c.read.pixelWidth, read.pixelWidth);
    EXPECT_DOUBLE_EQ(c.read.pixelHeight, read.pixelHeight);
    EXPECT_DOUBLE_EQ(c.read.spacing, read.spacing);
    EXPECT_EQ(c.read.unit, read.unit);
  }
}

/// Writes a page of each layout, and expects its samples.
void checkLayout(const std::string& path, const char* mode, TiffPage page) {
  page.width = 37, page.height = 23, page.bits = 16, page.format = SAMPLEFORMAT_INT, page.rowsPerStrip = 4;
  page.photometric = page.samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISWHITE;
  const int channels = page.planar == PLANARCONFIG_CONTIG ? page.samples : 1;
  const int blockWidth = page.tile ? page.tile : 37, blockHeight = page.tile ? page.tile : 4;
  const int across = (37 + blockWidth - 1) / blockWidth, down = (23 + blockHeight - 1) / blockHeight;
  const auto valueAt = [](int x, int y, int c) {
    return static_cast<std::int16_t>(x * 700 - y * 90 + c * 5);
  };
  writePages(path, mode, {page}, "", [&](int, int index, Bytes& bytes) {
    auto* value = reinterpret_cast<std::int16_t*>(bytes.data());
    const int plane = index / (across * down), block = index % (across * down);
    for (int y = 0; y < blockHeight; ++y)
      for (int x = 0; x < blockWidth; ++x)
        for (int c = 0; c < channels; ++c)
          *value++ = valueAt(block % across * blockWidth + x, block / across * blockHeight + y, plane + c);
  });
  const auto image = readImage(path);
  ASSERT_EQ(toString(ImageGeometry{37, 23, 1, std::size_t(page.samples)}), toString(image->getGeometry()));
  ASSERT_EQ(eImageBufferType::Int16, image->getBufferType());
  for (int c = 0; c < page.samples; ++c)
    for (int y = 0; y < 23; ++y)
      for (int x = 0; x < 37; ++x)
        ASSERT_EQ(valueAt(x, y, c), image->getRow<std::int16_t>(y, 0, c)[x]) << x << ", " << y << ", " << c;
}

TEST_F(ImageIO, LayoutsOfForeignTiffs) {
  for (const char* mode : {"wl", "wb", "w8"})
    for (const int compression :
         {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS})
      for (const int planar : {PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE})
        for (const int samples : {1, 3})
          for (const int tile : {0, 16}) {
            SCOPED_TRACE(testing::Message() << mode << " compression " << compression << " planar " << planar
                                            << " samples " << samples << " tile " << tile);
            TiffPage page;
            page.compression = compression, page.planar = planar, page.samples = samples, page.tile = tile;
            checkLayout(at("a.tif"), mode, page);
          }
}

TEST_F(ImageIO, JpegColourIsReadAsRgb) {
  const TiffPage page{
      32, 32, 3, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_YCBCR, PLANARCONFIG_CONTIG, COMPRESSION_JPEG, 0, 32};
  const unsigned char rgb[] = {200, 60, 20};
  writePages(at("a.tif"), "w", {page, page}, "", [&](int, int, Bytes& bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = rgb[i % 3];
  });
  const auto image = readImage(at("a.tif"));
  ASSERT_EQ(toString(ImageGeometry{32, 32, 2, 3}), toString(image->getGeometry()));
  for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(rgb[c], image->getRow<unsigned char>(17, 1, c)[11], 4);
  // The coded samples of the first page end before their time.
  Bytes bytes = readBytes(at("a.tif"));
  const unsigned char scan[] = {0xFF, 0xDA}, end[] = {0xFF, 0xD9};
  std::copy(end, end + 2, std::search(bytes.begin(), bytes.end(), scan, scan + 2) + 16);
  writeBytes(at("a.tif"), bytes.data(), bytes.size());
  EXPECT_THROW(readImage(at("a.tif")), BaseException);
}

TEST_F(ImageIO, PngSamplesAreWidenedAndOrdered) {
  const auto expect = [&](const ImageGeometry& g, eImageBufferType type,
                          const std::vector<unsigned>& values) {
    const auto image = readImage(at("a.png"));
    ASSERT_EQ(toString(g), toString(image->getGeometry()));
    ASSERT_EQ(type, image->getBufferType());
    std::vector<unsigned> actual;
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t x = 0; x < g.x; ++x)
        actual.push_back(type == eImageBufferType::UInt8 ? image->getRow<std::uint8_t>(g.y - 1, 0, c)[x]
                                                         : image->getRow<std::uint16_t>(g.y - 1, 0, c)[x]);
    EXPECT_EQ(values, actual);
  };
  for (const int interlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
    writeRawPng(at("a.png"), 3, 1, PNG_COLOR_TYPE_GRAY, interlace, {{0}, {0xA0}});
    expect({3, 2}, eImageBufferType::UInt8, {255, 0, 255});
    writeRawPng(at("a.png"), 2, 4, PNG_COLOR_TYPE_PALETTE, interlace, {{0x00}, {0x10}});
    expect({2, 2, 1, 3}, eImageBufferType::UInt8, {40, 1, 50, 2, 60, 3});
    writeRawPng(at("a.png"), 2, 16, PNG_COLOR_TYPE_GRAY_ALPHA, interlace,
                {Bytes(8), {0x12, 0x34, 0xFF, 0xFE, 0x00, 0x01, 0x80, 0x00}});
    expect({2, 2, 1, 2}, eImageBufferType::UInt16, {0x1234, 1, 0xFFFE, 0x8000});
  }
  // And what is written is what another reader of the format takes it for.
  const auto image = Image::create({1, 1}, eImageBufferType::UInt16);
  *image->getRow<std::uint16_t>(0) = 0x0102;
  writeImage(*image, at("b.png"));
  writeRawPng(at("a.png"), 1, 16, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, {{0x01, 0x02}});
  expectSame(*image, *readImage(at("a.png")));
  expectSame(*image, *readImage(at("b.png")));
}

TEST_F(ImageIO, UnsupportedTiffsAreNamed) {
  struct Case {
    TiffPage page;
    const char* cause;
  };
  std::vector<Case> cases(6);
  cases[0].page.bits = 1, cases[0].cause = "1-bit unsigned";
  cases[1].page.bits = 64, cases[1].page.format = SAMPLEFORMAT_IEEEFP, cases[1].cause = "64-bit floating";
  cases[2].page.bits = 16, cases[2].page.format = SAMPLEFORMAT_IEEEFP, cases[2].cause = "16-bit floating";
  cases[3].page.bits = 64, cases[3].page.format = SAMPLEFORMAT_COMPLEXIEEEFP, cases[3].cause = "complex";
  cases[4].page.photometric = PHOTOMETRIC_PALETTE, cases[4].cause = "palette";
  cases[5].page.photometric = PHOTOMETRIC_YCBCR, cases[5].page.samples = 3, cases[5].cause = "YCbCr";
  for (const Case& c : cases) {
    writePages(at("a.tif"), "w", {c.page}, "", fillByIndex);
    expectUnreadable(at("a.tif"), c.cause);
  }
  TiffPage other;
  other.bits = 16;
  writePages(at("a.tif"), "w", {TiffPage(), TiffPage(), other}, "", fillByIndex);
  expectUnreadable(at("a.tif"), "page 3");
}

/// The place in a little-endian classic TIFF of the value of a tag in the first directory; that of the offset
/// of the next directory for tag 0.
std::size_t findTag(const Bytes& bytes, unsigned tag) {
  const auto number = [&](std::size_t at, int size) {
    std::size_t value = 0;
    while (size--) value = value << 8 | bytes[at + size];
    return value;
  };
  const std::size_t directory = number(4, 4), entries = number(directory, 2);
  for (std::size_t i = 0; i < entries; ++i)
    if (number(directory + 2 + 12 * i, 2) == tag) return directory + 2 + 12 * i + 8;
  return directory + 2 + 12 * entries;
}

/// Small files of every kind.
class ImageIOSamples : public ImageIO {
protected:
  ImageIOSamples() {
    writeImage(*randomImage({5, 4, 2, 2}, eImageBufferType::UInt16), at("stack.tif"));
    writeImage(*randomImage({5, 4, 1, 3}, eImageBufferType::UInt8), at("colour.png"));
    writeRawPng(at("inter.png"), 3, 1, PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_ADAM7, {{0x80}, {0xA0}, {0}});
    TiffPage page;
    page.samples = 3, page.photometric = PHOTOMETRIC_RGB, page.compression = COMPRESSION_LZW;
    writePages(at("big.tif"), "w8", {page, page}, "", fillByIndex);
    page.compression = COMPRESSION_ADOBE_DEFLATE, page.planar = PLANARCONFIG_SEPARATE, page.tile = 16;
    writePages(at("tiles.tif"), "wb", {page, page}, "", fillByIndex);
    page.compression = COMPRESSION_NONE, page.tile = 0;
    writePages(at("strips.tif"), "wb", {page, page}, "", fillByIndex);
    writePages(at("ome.tif"), "w", {page, page, page},
               "<OME><Image><Pixels DimensionOrder='XYZCT' SizeX='5' SizeY='4' SizeZ='1' SizeC='9' SizeT='1'>"
               "<TiffData IFD='0' FirstC='6' /><TiffData IFD='1' PlaneCount='2'/></Pixels></Image></OME>",
               fillByIndex);
    writeImage(*randomImage({5, 4, 2, 2}, eImageBufferType::UInt8), at("one.tif"),
               {0.5, 0.5, 2, "mm", 1, ""});
    // Its other directories go.
    Bytes bytes = readBytes(at("one.tif"));
    bytes[findTag(bytes, 0)] = bytes[findTag(bytes, 0) + 1] = 0;
    bytes.resize(bytes[findTag(bytes, 273)] + 256u * bytes[findTag(bytes, 273) + 1] + 80u);
    writeBytes(at("one.tif"), bytes.data(), bytes.size());
  }
  const std::string paths[8] = {at("stack.tif"), at("colour.png"), at("inter.png"), at("big.tif"),
                                at("tiles.tif"), at("strips.tif"), at("ome.tif"),   at("one.tif")};
};

TEST_F(ImageIOSamples, ThatEndEarlyAreRefused) {
  for (const std::string& path : paths) {
    const Bytes bytes = readBytes(path);
    EXPECT_NO_THROW(readImage(path)) << path;
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      writeBytes(at("cut"), bytes.data(), size);
      ASSERT_THROW(readImage(at("cut")), BaseException) << path << " cut to " << size;
    }
  }
}

TEST_F(ImageIOSamples, ThatAreDamagedNeverCrash) {
  std::mt19937 random(3);
  for (const std::string& path : paths) {
    const Bytes bytes = readBytes(path);
    int refused = 0;
    for (int i = 0; i < 1000; ++i) {
      Bytes damaged = bytes;
      for (unsigned n = 0; n <= i % 3u; ++n)
        damaged[random() % bytes.size()] ^= static_cast<unsigned char>(1u << random() % 8);
      writeBytes(at("damaged"), damaged.data(), damaged.size());
      const std::string error = test::failureOf([&] { readImage(at("damaged")); });
      if (error.empty()) continue;
      ++refused;
      ASSERT_TRUE(test::has(error, "damaged"));
    }
    EXPECT_LT(0, refused) << path;
  }
}

TEST_F(ImageIO, HostileHeadersAreRefused) {
  struct Case {
    const char* name;
    const char* cause;
    int compression;
    std::vector<std::pair<unsigned, std::uint32_t>> values;
  };
  const Case cases[] = {
      {"sizes", "ends early", COMPRESSION_NONE, {{256, 0x7fffffff}, {257, 0x7fffffff}, {278, 0x7fffffff}}},
      {"compressed", "cannot come from", COMPRESSION_LZW, {{256, 0x10000}, {257, 0x10000}, {278, 0x10000}}},
      {"next page outside", "ends early", COMPRESSION_NONE, {{0, 0x10000000}}},
      {"next page is this one", "damaged", COMPRESSION_NONE, {{0, 8}}},
      {"strip outside", "ends early", COMPRESSION_NONE, {{273, 0x7fffffff}}},
      {"too few bytes", "cannot come from", COMPRESSION_PACKBITS, {{279, 1}}},
      {"no rows per strip", "RowsPerStrip", COMPRESSION_NONE, {{278, 0}}}};
  for (const Case& c : cases) {
    TiffPage page;
    page.compression = c.compression, page.rowsPerStrip = 4, page.width = 600;
    writePages(at("a.tif"), "wl", {page, page}, "", fillByIndex);
    Bytes bytes = readBytes(at("a.tif"));
    for (auto [tag, value] : c.values) {
      const std::size_t place = findTag(bytes, tag);
      if (tag == 0 && value == 8) value = bytes[4] | bytes[5] << 8;
      for (int i = 0; i < 4; ++i) bytes[place + i] = static_cast<unsigned char>(value >> 8 * i);
      if (tag) bytes[place - 6] = 4, bytes[place - 5] = 0;  // the value has 32 bits
    }
    writeBytes(at("b.tif"), bytes.data(), bytes.size());
    SCOPED_TRACE(c.name);
    expectUnreadable(at("b.tif"), c.cause);
  }
  writeRawPng(at("a.png"), 0x7fffffff, 1, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, {}, 0x7fffffff);
  expectError([&] { readImage(at("a.png")); }, at("a.png"), "cannot hold");
}

TEST_F(ImageIO, UnreadablePathsAreNamed) {
  writeBytes(at("nothing.tif"), nullptr, 0);
  writeBytes(at("text.tif"), reinterpret_cast<const unsigned char*>("no image"), 8);
  ASSERT_EQ(0, mkfifo(at("pipe").c_str(), 0600));
  const std::pair<const char*, const char*> cases[] = {
      {"missing.tif", "No such file"}, {"temporary", "folder"},     {"nothing.tif", "empty"},
      {"text.tif", "neither"},         {"pipe", "no regular file"}, {"text.tif/a", "Not a directory"}};
  for (const auto& [name, cause] : cases) expectUnreadable(at(name), cause);
  if (geteuid() == 0) return;  // who may read everything
  chmod(at("text.tif").c_str(), 0);
  expectError([&] { readImage(at("text.tif")); }, at("text.tif"), "Permission denied");
}

}  // namespace
}  // namespace vexo::image::io
