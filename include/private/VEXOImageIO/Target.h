#pragma once

#include <atomic>
#include <filesystem>
#include <memory>

#include "VEXOImageIO/File.h"

namespace vexo::image::io {

/// A path that a file is to be written to. What is written goes to a file aside, which commit() moves into
/// place when it is on the disk; until then nothing changes at the path, and without it nothing is left
/// behind. The file aside has no name where the file system offers that. Else it has one that tells its
/// process, and the next writer into the folder removes it should the process be killed.
class Target {
public:
  /// `cancelled`, when it is given and becomes true, makes what follows fail.
  explicit Target(std::string path, const std::atomic<bool>* cancelled = nullptr);
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;
  ~Target();

  const std::string& getPath() const { return _path; }
  /// "cannot write 'a.tif'".
  const std::string& getErrorPrefix() const { return _errorPrefix; }

  /// Finds out what the path stands for; throws when no file can be written there.
  void resolve();
  /// The empty file aside. After resolve().
  File& begin();
  void commit();

private:
  template <class... Args>
  [[noreturn]] void fail(const boost::source_location& where, const Args&... args) const {
    raiseError(where, moduleName, _errorPrefix, ": ", args...);
  }
  void followLinks();
  std::filesystem::path getFolder() const;
  std::filesystem::path getAsideFolder() const;
  int createNamed(const std::filesystem::path& folder);
  bool giveName();
  void keepPermissions();
  void copyToDevice();

  const std::string _path;
  const std::string _errorPrefix;
  const std::atomic<bool>* const _cancelled;
  std::filesystem::path _resolved;  ///< the path after all links, unless it is a device
  bool _isDevice = false;           ///< or a pipe or any other thing that cannot be replaced by a file
  bool _isReplaced = false;         ///< a regular file is there
  std::filesystem::path _aside;     ///< the name of the file aside, while it has one
  std::unique_ptr<File> _file;
};

}  // namespace vexo::image::io
