#pragma once

#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <vector>

#include "VEXOImageIO/ImageIO.h"
#include "tools/ImageChecks.h"

namespace vexo::image::io {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

Bytes readBytes(const std::string& path);
void writeBytes(const std::string& path, const unsigned char* data, std::size_t size);

boost::shared_ptr<Image> randomImage(const ImageGeometry& g, eImageBufferType type);
inline void expectSame(const Image& expected, const Image& actual) {
  EXPECT_TRUE(test::sameBits(expected, actual));
}

/// A call must fail with a message that names the path and the cause.
template <class Call>
void expectError(const Call& call, const std::string& path, const std::string& cause) {
  test::expectFailure({path, cause}, call);
}
/// Neither the image nor its description can be read.
inline void expectUnreadable(const std::string& path, const std::string& cause) {
  expectError([&] { readImage(path); }, path, cause);
  expectError([&] { readImageInfo(path); }, path, cause);
}

/// A page that libtiff is to write.
struct TiffPage {
  int width = 5, height = 4, samples = 1, bits = 8, format = SAMPLEFORMAT_UINT;
  int photometric = PHOTOMETRIC_MINISBLACK, planar = PLANARCONFIG_CONTIG, compression = COMPRESSION_NONE;
  int tile = 0, rowsPerStrip = 3;
  int kind = 0;
  float across = 0;  ///< pixels per unit, of no name; none when 0
};

/// Changes the bytes of strip or tile `index` of page `page`.
using Filler = std::function<void(int page, int index, Bytes& bytes)>;
void writePages(const std::string& path, const char* mode, const std::vector<TiffPage>& pages,
                const std::string& description, const Filler& fill);
void fillByIndex(int page, int index, Bytes& bytes);

/// A PNG whose rows have the given bytes, as libpng takes them without any change. With a `statedHeight` it
/// ends where the rows begin.
void writeRawPng(const std::string& path, int width, int depth, int colour, int interlace,
                 std::vector<Bytes> rows, int statedHeight = 0,
                 const std::function<void(png_structp, png_infop)>& addChunks = {});

/// An entry of a directory, as the file has it: numbers of 16 bits (type 3) or 32 (type 4), the characters of
/// a text (type 2), or numbers over 1 (type 5).
struct RawField {
  unsigned tag, type;
  std::vector<std::uint32_t> values;
};
/// A little-endian classic TIFF of so many pages with these fields; `data` bytes of 0x55 lie at offset 8.
void writeRawTiff(const std::string& path, std::size_t data, const std::vector<RawField>& fields,
                  int pages = 1);

/// A test with a folder of its own.
class ImageIO : public testing::Test {
protected:
  ImageIO() {
    fs::remove_all(_folder);
    fs::create_directories(_folder / "temporary");
    setenv("TMPDIR", (_folder / "temporary").c_str(), 1);
  }
  ~ImageIO() override {
    unsetenv("TMPDIR");
    fs::remove_all(_folder);
  }
  std::string at(const std::string& name) const { return (_folder / name).string(); }
  /// Files and folders below the folder of the test, itself and the one for temporary files left out.
  std::size_t countFiles() const {
    return static_cast<std::size_t>(std::distance(fs::recursive_directory_iterator(_folder), {})) - 1;
  }

  const fs::path _folder = fs::path(testing::TempDir()) / ("vexo-image-io-" + std::to_string(getpid()));
};

}  // namespace vexo::image::io
