#include "VEXOImageIO/Target.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <vector>

namespace vexo::image::io {
namespace fs = std::filesystem;

Target::Target(std::string path) : _path(std::move(path)), _errorPrefix("cannot write '" + _path + "'") {}

Target::~Target() {
  if (!_aside.empty()) ::unlink(_aside.c_str());
}

void Target::resolve() {
  std::error_code error;
  const fs::file_status status = fs::status(_path, error);
  if (status.type() == fs::file_type::none) fail(VEXO_HERE, error.message());
  if (fs::is_directory(status)) fail(VEXO_HERE, "it is a folder");
  const bool exists = fs::exists(status);
  _resolved = _path;
  _isReplaced = fs::is_regular_file(status);
  _isDevice = exists && !_isReplaced;
  if (!_isDevice) followLinks();
  if (!_isDevice && !fs::is_directory(getFolder(), error)) fail(VEXO_HERE, getFolder(), " is no folder");
  if (!_isDevice && ::access(getFolder().c_str(), W_OK | X_OK) != 0)
    fail(VEXO_HERE, "the folder ", getFolder(), ": ", describeErrno(errno));
  if (exists && ::access(_resolved.c_str(), W_OK) != 0) fail(VEXO_HERE, describeErrno(errno));
}

/// Unlike std::filesystem, follows a link to where there is no file yet as well.
void Target::followLinks() {
  std::error_code error;
  for (int links = 0; links < 40 && fs::is_symlink(fs::symlink_status(_resolved, error)); ++links)
    _resolved = _resolved.parent_path() / fs::read_symlink(_resolved, error);
  if (_resolved.filename().empty()) fail(VEXO_HERE, "the path names no file");
}

fs::path Target::getFolder() const {
  const fs::path folder = _resolved.parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

File& Target::begin() {
  const int descriptor = createAside();
  _file = std::make_unique<File>(_errorPrefix, descriptor);
  if (_isDevice) {
    // Only the descriptor is needed, so that even a signal leaves no file behind.
    ::unlink(_aside.c_str());
    _aside.clear();
  }
  if (_isReplaced) keepPermissions();
  return *_file;
}

/// Creates the file under a new name. Created this way rather than by mkstemp it gets the usual permissions.
int Target::createAside() {
  static std::atomic<unsigned> counter{0};
  std::error_code error;
  const fs::path folder = _isDevice ? fs::temp_directory_path(error) : getFolder();
  if (error) fail(VEXO_HERE, "no folder for temporary files: ", error.message());
  for (;;) {
    const fs::path name =
        folder / (".vexo-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".part");
    const int descriptor = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor >= 0) {
      _aside = name;
      return descriptor;
    }
    if (errno != EEXIST) fail(VEXO_HERE, "temporary file ", name, ": ", describeErrno(errno));
  }
}

void Target::keepPermissions() {
  struct stat old {
  }, now{};
  if (::stat(_resolved.c_str(), &old) != 0 || ::fstat(_file->getDescriptor(), &now) != 0) return;
  constexpr mode_t bits = 0777;
  // Some file systems know no permissions and refuse to change them, even to what they are.
  if ((old.st_mode & bits) != (now.st_mode & bits) &&
      ::fchmod(_file->getDescriptor(), old.st_mode & bits) != 0)
    fail(VEXO_HERE, "its permissions cannot be kept: ", describeErrno(errno));
}

void Target::commit() {
  if (_isDevice) copyToDevice();
  if (!_file->close()) fail(VEXO_HERE, _file->getFailure());
  if (_isDevice) return;
  if (::rename(_aside.c_str(), _resolved.c_str()) != 0) fail(VEXO_HERE, describeErrno(errno));
  _aside.clear();
}

void Target::copyToDevice() {
  const int descriptor = ::open(_path.c_str(), O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) fail(VEXO_HERE, describeErrno(errno));
  File device(_errorPrefix, descriptor);
  std::vector<char> buffer(std::size_t(1) << 20);
  if (_file->seek(0, SEEK_SET) != 0) fail(VEXO_HERE, "the temporary file cannot be read");
  for (std::uint64_t left = _file->getSize(); left > 0;) {
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size()));
    if (_file->read(buffer.data(), size) != size) fail(VEXO_HERE, _file->getFailure());
    if (!device.write(buffer.data(), size)) fail(VEXO_HERE, device.getFailure());
    left -= size;
  }
  if (!device.close()) fail(VEXO_HERE, device.getFailure());
}

}  // namespace vexo::image::io
