#include "VEXOImageIO/Target.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <mutex>
#include <set>
#include <vector>

namespace vexo::image::io {
namespace fs = std::filesystem;
namespace {

constexpr char asidePrefix[] = ".vexo-", asideSuffix[] = ".part";

/// A name that no other file of this process has.
fs::path makeAsideName(const fs::path& folder) {
  static std::atomic<unsigned> counter{0};
  return folder / (asidePrefix + std::to_string(::getpid()) + '-' + std::to_string(counter++) + asideSuffix);
}

/// The process that a temporary file belongs to by its name; 0 when it is none.
pid_t parseOwner(const std::string& name) {
  const std::size_t prefix = sizeof(asidePrefix) - 1, suffix = sizeof(asideSuffix) - 1;
  if (name.size() < prefix + suffix || name.compare(0, prefix, asidePrefix) != 0 ||
      name.compare(name.size() - suffix, suffix, asideSuffix) != 0)
    return 0;
  pid_t owner = 0;
  const auto result = std::from_chars(name.data() + prefix, name.data() + name.size(), owner);
  return result.ec == std::errc() && *result.ptr == '-' && owner > 0 ? owner : 0;
}

/// Removes what processes that are gone have left in the folder. Those of other machines and containers,
/// whose numbers say nothing here, hold a lock.
void removeStaleFiles(const fs::path& folder) {
  DIR* entries = ::opendir(folder.c_str());
  if (!entries) return;
  const int folderDescriptor = ::dirfd(entries);
  while (const dirent* entry = ::readdir(entries)) {
    const pid_t owner = parseOwner(entry->d_name);
    if (owner == 0 || ::kill(owner, 0) == 0 || errno != ESRCH) continue;
    const int file =
        ::openat(folderDescriptor, entry->d_name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0) continue;
    if (::flock(file, LOCK_EX | LOCK_NB) == 0) ::unlinkat(folderDescriptor, entry->d_name, 0);
    ::close(file);
  }
  ::closedir(entries);
}

/// Once per process and folder, so that writing many files into a large folder takes no longer.
void removeStaleFilesOnce(const fs::path& folder) {
  static std::mutex mutex;
  static auto& known = *new std::set<fs::path>;
  std::error_code error;
  const fs::path full = fs::absolute(folder, error);
  const std::lock_guard<std::mutex> lock(mutex);
  if (known.insert(full).second) removeStaleFiles(folder);
}

}  // namespace

Target::Target(std::string path, const std::atomic<bool>* cancelled)
    : _path(std::move(path)), _errorPrefix("cannot write " + quote(_path)), _cancelled(cancelled) {}

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
  if (!_isDevice && !fs::is_directory(getFolder(), error))
    fail(VEXO_HERE, quote(getFolder().string()), " is no folder");
  if (!_isDevice && ::access(getFolder().c_str(), W_OK | X_OK) != 0)
    fail(VEXO_HERE, "the folder ", quote(getFolder().string()), ": ", describeErrno(errno));
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

fs::path Target::getAsideFolder() const {
  if (!_isDevice) return getFolder();
  std::error_code error;
  const fs::path folder = fs::temp_directory_path(error);
  if (error) fail(VEXO_HERE, "no folder for temporary files: ", error.message());
  return folder;
}

File& Target::begin() {
  const fs::path folder = getAsideFolder();
  removeStaleFilesOnce(folder);
  // A file without a name goes away with the process, whatever ends it. It gets its name through /proc.
  int descriptor = -1;
  if (::access("/proc/self/fd", X_OK) == 0)
    descriptor = ::open(folder.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, 0666);
  if (descriptor < 0) descriptor = createNamed(folder);
  _file = std::make_unique<File>(_errorPrefix, descriptor);
  _file->setCancelFlag(_cancelled);
  ::flock(descriptor, LOCK_EX | LOCK_NB);
  if (_isDevice && !_aside.empty()) {
    ::unlink(_aside.c_str());
    _aside.clear();
  }
  if (_isReplaced) keepPermissions();
  return *_file;
}

/// Created this way rather than by mkstemp it gets the usual permissions.
int Target::createNamed(const fs::path& folder) {
  for (;;) {
    const fs::path name = makeAsideName(folder);
    const int descriptor = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor >= 0) {
      _aside = name;
      return descriptor;
    }
    if (errno != EEXIST) fail(VEXO_HERE, "temporary file ", quote(name.string()), ": ", describeErrno(errno));
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
  if (_isDevice) {
    copyToDevice();
  } else {
    // Before the name: else a power cut may leave the name of a file whose samples never reached the disk.
    if (!_file->sync()) fail(VEXO_HERE, _file->getFailure());
    if (_cancelled && *_cancelled) fail(VEXO_HERE, describeErrno(ECANCELED));
    const bool isPlaced = _aside.empty() && giveName();
    if (!isPlaced && ::rename(_aside.c_str(), _resolved.c_str()) != 0) fail(VEXO_HERE, describeErrno(errno));
    _aside.clear();
  }
  if (!_file->close()) fail(VEXO_HERE, _file->getFailure());
}

/// Gives the file its name; false when there is a file of that name, then it gets the name of one aside.
bool Target::giveName() {
  const std::string file = "/proc/self/fd/" + std::to_string(_file->getDescriptor());
  const auto link = [&file](const fs::path& name) {
    return ::linkat(AT_FDCWD, file.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
  };
  if (!_isReplaced && link(_resolved)) return true;
  for (fs::path name = makeAsideName(getFolder());; name = makeAsideName(getFolder())) {
    if (link(name)) {
      _aside = name;
      return false;
    }
    if (errno != EEXIST) fail(VEXO_HERE, "temporary file ", quote(name.string()), ": ", describeErrno(errno));
  }
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
