#include "TestFiles.h"

#include <cstring>
#include <fstream>
#include <memory>
#include <random>

namespace vexo::image::io {

Bytes readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}
void writeBytes(const std::string& path, const unsigned char* data, std::size_t size) {
  // Some file systems wait for the disk when a file is overwritten.
  fs::remove(path);
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

boost::shared_ptr<Image> randomImage(const ImageGeometry& g, eImageBufferType type) {
  static std::mt19937 random(7);
  auto image = Image::create(g, type);
  auto* bytes = static_cast<unsigned char*>(image->getData());
  for (std::ptrdiff_t i = 0; i < image->getStrides().t * static_cast<std::ptrdiff_t>(g.t); ++i)
    bytes[i] = static_cast<unsigned char>(random());
  return image;
}

void writePages(const std::string& path, const char* mode, const std::vector<TiffPage>& pages,
                const std::string& description, const Filler& fill) {
  std::unique_ptr<TIFF, void (*)(TIFF*)> owner(TIFFOpen(path.c_str(), mode), TIFFClose);
  TIFF* tiff = owner.get();
  ASSERT_NE(nullptr, tiff);
  for (std::size_t i = 0; i < pages.size(); ++i) {
    const TiffPage& p = pages[i];
    for (const auto& [tag, value] :
         {std::pair<int, int>{TIFFTAG_SUBFILETYPE, p.kind},
          {TIFFTAG_IMAGEWIDTH, p.width},
          {TIFFTAG_IMAGELENGTH, p.height},
          {TIFFTAG_SAMPLESPERPIXEL, p.samples},
          {TIFFTAG_BITSPERSAMPLE, p.bits},
          {TIFFTAG_SAMPLEFORMAT, p.format},
          {TIFFTAG_COMPRESSION, p.compression},
          {TIFFTAG_PHOTOMETRIC, p.photometric},
          {TIFFTAG_PLANARCONFIG, p.planar},
          {p.tile ? TIFFTAG_TILEWIDTH : TIFFTAG_ROWSPERSTRIP, p.tile ? p.tile : p.rowsPerStrip}})
      TIFFSetField(tiff, tag, value);
    if (p.tile) TIFFSetField(tiff, TIFFTAG_TILELENGTH, p.tile);
    if (p.across > 0) {
      TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_NONE);
      for (const std::uint32_t tag : {TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION})
        TIFFSetField(tiff, tag, static_cast<double>(p.across));
    }
    if (p.compression == COMPRESSION_JPEG) TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (p.photometric == PHOTOMETRIC_PALETTE) {
      std::uint16_t map[256] = {};
      TIFFSetField(tiff, TIFFTAG_COLORMAP, map, map, map);
    }
    if (i == 0 && !description.empty()) TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, description.c_str());
    Bytes bytes(static_cast<std::size_t>(p.tile ? TIFFTileSize(tiff) : TIFFStripSize(tiff)));
    const int blocks = static_cast<int>(p.tile ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff));
    for (int b = 0; b < blocks; ++b) {
      fill(static_cast<int>(i), b, bytes);
      const auto size = static_cast<tmsize_t>(bytes.size());
      ASSERT_LT(0, p.tile ? TIFFWriteEncodedTile(tiff, b, bytes.data(), size)
                          : TIFFWriteEncodedStrip(tiff, b, bytes.data(), size));
    }
    ASSERT_EQ(1, TIFFWriteDirectory(tiff));
  }
}
void fillByIndex(int page, int index, Bytes& bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<unsigned char>(37 * page + 11 * index + static_cast<int>(i));
}

void writeRawPng(const std::string& path, int width, int depth, int colour, int interlace,
                 std::vector<Bytes> rows, int statedHeight,
                 const std::function<void(png_structp, png_infop)>& addChunks) {
  std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "wb"), fclose);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_user_limits(png, 0x7fffffff, 0x7fffffff);
  png_init_io(png, file.get());
  png_set_IHDR(png, info, width, statedHeight ? statedHeight : static_cast<int>(rows.size()), depth, colour,
               interlace, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
  const png_color palette[] = {{1, 2, 3}, {40, 50, 60}};
  if (colour == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, 2);
  if (addChunks) addChunks(png, info);
  png_write_info(png, info);
  std::vector<unsigned char*> pointers;
  for (Bytes& row : rows) pointers.push_back(row.data());
  if (!statedHeight) png_write_image(png, pointers.data()), png_write_end(png, info);
  if (statedHeight) png_write_chunk(png, reinterpret_cast<const unsigned char*>("IDAT"), nullptr, 0);
  png_destroy_write_struct(&png, &info);
}

void writeRawTiff(const std::string& path, std::size_t data, const std::vector<RawField>& fields, int pages) {
  Bytes bytes = {'I', 'I', 42, 0, 0, 0, 0, 0};
  const auto put = [&bytes](std::size_t at, std::size_t value, std::size_t size) {
    bytes.resize(std::max(bytes.size(), at + size));
    for (; size--; value >>= 8) bytes[at++] = static_cast<unsigned char>(value);
  };
  bytes.resize(8 + data, 0x55);
  std::size_t link = 4;
  for (int page = 0; page < pages; ++page) {
    bytes.resize((bytes.size() + 1) / 2 * 2);
    const std::size_t directory = bytes.size(), values = directory + 2 + 12 * fields.size() + 4;
    put(link, directory, 4);
    put(directory, fields.size(), 2);
    link = values - 4;
    put(link, 0, 4);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const RawField& field = fields[i];
      const std::size_t entry = directory + 2 + 12 * i, size = field.type == 2   ? 1
                                                               : field.type == 3 ? 2
                                                               : field.type == 5 ? 8
                                                                                 : 4;
      put(entry, field.tag, 2);
      put(entry + 2, field.type, 2);
      put(entry + 4, field.values.size(), 4);
      put(entry + 8, 0, 4);
      std::size_t at = entry + 8;
      if (size * field.values.size() > 4) put(at, bytes.size(), 4), at = bytes.size();
      for (const std::uint32_t value : field.values)
        put(at, field.type == 5 ? value | std::size_t(1) << 32 : value, size), at += size;
    }
  }
  writeBytes(path, bytes.data(), bytes.size());
}

}  // namespace vexo::image::io
