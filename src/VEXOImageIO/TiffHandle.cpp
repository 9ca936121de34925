#include "VEXOImageIO/TiffHandle.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace vexo::image::io {
namespace {

File& fileOf(thandle_t handle) {
  return *static_cast<File*>(handle);
}

tmsize_t readBytes(thandle_t handle, void* to, tmsize_t size) {
  return static_cast<tmsize_t>(fileOf(handle).read(to, static_cast<std::size_t>(size)));
}
tmsize_t writeNothing(thandle_t, void*, tmsize_t) {
  return -1;
}
toff_t seekTo(thandle_t handle, toff_t offset, int whence) {
  return static_cast<toff_t>(fileOf(handle).seek(static_cast<std::int64_t>(offset), whence));
}
/// The file outlives the handle: its owner closes it.
int leaveOpen(thandle_t) {
  return 0;
}
toff_t sizeOf(thandle_t handle) {
  return fileOf(handle).getSize();
}

}  // namespace

std::uint64_t TiffHandle::getLargestWhole(const File& file) {
  constexpr std::uint64_t most = std::uint64_t(1) << 54;
  return (std::uint64_t(16) << 20) + 64 * std::min(file.getSize(), most);
}

TiffHandle::TiffHandle(File& file, const char* mode) : _file(file) {
  if (TIFFOpenOptions* options = TIFFOpenOptionsAlloc()) {
    // libtiff believes numbers of a directory before this module can ask what the file makes plausible. Its
    // decoders ask for up to twice the size of a block, and a little more.
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(3 * getLargestWhole(file)));
    file.limitReading((std::uint64_t(64) << 20) + 16 * std::min(file.getSize(), File::unlimited / 32));
    TIFFOpenOptionsSetErrorHandlerExtR(options, keepError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, keepWarning, this);
    _tiff = TIFFClientOpenExt("TIFF", mode, &file, readBytes, writeNothing, seekTo, leaveOpen, sizeOf,
                              nullptr, nullptr, options);
    TIFFOpenOptionsFree(options);
  }
  if (!_tiff) raiseFileError(VEXO_HERE, file, getCause());
}

void TiffHandle::close() noexcept {
  if (_tiff) TIFFClose(_tiff);
  _tiff = nullptr;
}

std::string TiffHandle::getCause() const {
  if (_file.hasFailed()) return _file.getFailure();
  return _error[0] ? _error : "the TIFF file is damaged";
}

void TiffHandle::check(bool succeeded) const {
  if (!succeeded || hasFailed()) raiseFileError(VEXO_HERE, _file, getCause());
}

int TiffHandle::keepWarning(TIFF* tiff, void* self, const char* where, const char* format,
                            va_list arguments) {
  return static_cast<TiffHandle*>(self)->_strict ? keepError(tiff, self, where, format, arguments) : 1;
}

int TiffHandle::keepError(TIFF*, void* self, const char*, const char* format, va_list arguments) {
  char* error = static_cast<TiffHandle*>(self)->_error;
  if (!error[0]) vsnprintf(error, sizeof(_error), format, arguments);
  return 1;
}

}  // namespace vexo::image::io
