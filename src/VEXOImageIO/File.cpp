#include "VEXOImageIO/File.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace vexo::image::io {
namespace {

/// The system moves at most about 2 GiB in one call.
constexpr std::size_t largestTransfer = std::size_t(1) << 30;
/// Between two looks at whether to go on.
constexpr std::size_t largestWrite = std::size_t(16) << 20;

}  // namespace

std::string describeErrno(int number) {
  return std::generic_category().message(number);
}

std::uint64_t File::getSize() const noexcept {
  struct stat status;
  return fstat(_descriptor, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::size_t File::read(void* to, std::size_t size) noexcept {
  if (size > _readable) _hasReadTooMuch = true;
  if (_hasReadTooMuch) return 0;
  if (_readable != unlimited) _readable -= size;
  std::size_t done = 0;
  while (done < size) {
    const ssize_t n =
        ::read(_descriptor, static_cast<char*>(to) + done, std::min(size - done, largestTransfer));
    if (n > 0) {
      done += static_cast<std::size_t>(n);
    } else if (n == 0) {
      _endedEarly = true;
      break;
    } else if (errno != EINTR) {
      keepErrno();
      break;
    }
  }
  return done;
}

bool File::write(const void* from, std::size_t size) noexcept {
  std::size_t done = 0;
  while (done < size) {
    if (_cancelled && *_cancelled) {
      errno = ECANCELED;
      keepErrno();
      return false;
    }
    const ssize_t n =
        ::write(_descriptor, static_cast<const char*>(from) + done, std::min(size - done, largestWrite));
    if (n > 0) {
      done += static_cast<std::size_t>(n);
    } else if (n == 0 || errno != EINTR) {
      if (n == 0) errno = EIO;  // never wait for a device that takes nothing
      keepErrno();
      return false;
    }
  }
  return true;
}

std::int64_t File::seek(std::int64_t offset, int whence) noexcept {
  return lseek(_descriptor, offset, whence);
}

bool File::sync() noexcept {
  int result;
  do result = ::fsync(_descriptor);
  while (result != 0 && errno == EINTR);
  // Some file systems have nothing to wait for.
  if (result == 0 || errno == EINVAL || errno == ENOSYS || errno == EROFS) return true;
  keepErrno();
  return false;
}

bool File::close() noexcept {
  if (_descriptor < 0) return true;
  const int result = ::close(_descriptor);
  if (result != 0) keepErrno();
  _descriptor = -1;
  return result == 0;
}

std::string File::getFailure() const {
  if (_errno != 0) return describeErrno(_errno);
  if (_hasReadTooMuch) return "its directories state the same bytes many times over";
  return _endedEarly ? "the file ends early" : "";
}

void File::keepErrno() noexcept {
  if (_errno == 0) _errno = errno;
}

}  // namespace vexo::image::io
