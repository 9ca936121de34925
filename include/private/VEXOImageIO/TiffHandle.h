#pragma once

#include <tiffio.h>

#include "VEXOImageIO/File.h"

namespace vexo::image::io {

/// libtiff on an open file that is read. The first error it reports is kept; nothing goes to its global
/// handlers.
class TiffHandle {
public:
  /// The largest strip or tile of a codec that decodes it as a whole.
  static std::uint64_t getLargestWhole(const File& file);

  /// Until the file's reading is limited anew, libtiff may read a multiple of its size only: directories can
  /// share their data, any number of times. Throws when the file cannot be opened in this mode of libtiff.
  TiffHandle(File& file, const char* mode);
  TiffHandle(const TiffHandle&) = delete;
  TiffHandle& operator=(const TiffHandle&) = delete;
  ~TiffHandle() { close(); }

  TIFF* get() const { return _tiff; }
  void close() noexcept;
  /// From now on a warning counts as an error, or no longer.
  void setStrict(bool strict) { _strict = strict; }
  bool hasFailed() const { return _error[0] != 0 || _file.hasFailed(); }
  std::string getCause() const;
  /// Throws when `succeeded` is false or an error was reported.
  void check(bool succeeded) const;

private:
  static int keepWarning(TIFF*, void* self, const char* where, const char* format, va_list arguments);
  static int keepError(TIFF*, void* self, const char* where, const char* format, va_list arguments);

  File& _file;
  TIFF* _tiff = nullptr;
  char _error[256] = "";
  bool _strict = false;
};

}  // namespace vexo::image::io
