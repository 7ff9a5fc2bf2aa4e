// One process at a time uses a file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>

namespace fliglaf::platform {

/// Another process, or another FileLock of this one, has the file: "FILE: in use by process PID
/// (NAME)", or "FILE: in use by another process" where the system does not say which.
class FileInUse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Keeps a file for this process until it is destroyed or the process ends. A file that is replaced
/// meanwhile has to be replaced with the lock at hand (OutputFile::Replace).
class FileLock {
 public:
  /// Throws FileInUse, and std::system_error when the file cannot be opened. On a file system
  /// without locks, and for what is not a file, the lock holds nothing.
  explicit FileLock(const std::filesystem::path& file);
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();

 private:
  friend class OutputFile;

  /// Descriptor of the locked file, or HANDLE of a section that stands for its name; none: -1.
  std::intptr_t handle_ = -1;
};

}  // namespace fliglaf::platform
