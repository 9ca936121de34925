#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "VEXOCore/Log.h"

namespace vexo::image::io {

constexpr const char* moduleName = "VEXOImageIO";

/// What the operating system says about an error number.
std::string describeErrno(int number);

/// An open file. C libraries call its operations, which therefore never throw; they keep the first failure
/// instead.
class File {
public:
  static constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

  /// Owns the descriptor. `errorPrefix` starts every message about this file: "cannot read 'a.tif'".
  File(std::string errorPrefix, int descriptor, std::string name = {})
      : _errorPrefix(std::move(errorPrefix)), _name(std::move(name)), _descriptor(descriptor) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { close(); }

  const std::string& getErrorPrefix() const { return _errorPrefix; }
  /// Without its folder; empty when nobody asks for it.
  const std::string& getName() const { return _name; }
  int getDescriptor() const { return _descriptor; }
  std::uint64_t getSize() const noexcept;

  /// Bytes read. Fewer than asked for, whatever the reason, are a failure.
  std::size_t read(void* to, std::size_t size) noexcept;
  /// From now on reading more than so many bytes in all is a failure.
  void limitReading(std::uint64_t bytes) noexcept { _readable = bytes; }
  bool write(const void* from, std::size_t size) noexcept;
  /// The new position, or -1: an offset out of range, which is no failure yet.
  std::int64_t seek(std::int64_t offset, int whence) noexcept;
  /// Writing fails once the flag is true.
  void setCancelFlag(const std::atomic<bool>* cancelled) { _cancelled = cancelled; }
  /// Waits until the disk has what was written.
  bool sync() noexcept;
  bool close() noexcept;

  bool hasFailed() const { return _errno != 0 || _endedEarly || _hasReadTooMuch; }
  /// What went wrong first; empty while nothing did.
  std::string getFailure() const;

private:
  void keepErrno() noexcept;

  const std::string _errorPrefix, _name;
  int _descriptor;
  int _errno = 0;
  const std::atomic<bool>* _cancelled = nullptr;
  bool _endedEarly = false, _hasReadTooMuch = false;
  std::uint64_t _readable = unlimited;
};

/// Raises an error about a file; the arguments are joined.
template <class... Args>
[[noreturn]] void raiseFileError(const boost::source_location& where, const File& file, const Args&... args) {
  raiseError(where, moduleName, file.getErrorPrefix(), ": ", args...);
}

/// Runs an allocation for a file, so that its error names the file too.
template <class Allocate>
auto allocateFor(const File& file, const Allocate& allocate) {
  try {
    return allocate();
  } catch (const BaseException& e) {
    raiseFileError(VEXO_HERE, file, e.getMessage());
  }
}

}  // namespace vexo::image::io
